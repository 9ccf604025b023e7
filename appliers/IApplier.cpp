#include "telemetry/IApplier.h"

#include <utility>

namespace Velo::OS::Telemetry {

IApplier::IApplier(std::string name) : name_(std::move(name)) {}

IApplier::~IApplier() = default;

}  // namespace Velo::OS::Telemetry
