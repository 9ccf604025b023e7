#include "telemetry/IMonitor.h"

#include <utility>

namespace Velo::OS::Telemetry {

IMonitor::IMonitor(std::string name, MonitorEventCallback callback)
    : name_(std::move(name)), callback_(std::move(callback)) {}

IMonitor::~IMonitor() = default;

}  // namespace Velo::OS::Telemetry
