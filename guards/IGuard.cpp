#include "telemetry/IGuard.h"

#include <utility>

namespace Velo::OS::Telemetry {

IGuard::IGuard(std::string name, MonitorEventCallback callback)
    : name_(std::move(name)), callback_(std::move(callback)) {}

IGuard::~IGuard() = default;

}  // namespace Velo::OS::Telemetry
