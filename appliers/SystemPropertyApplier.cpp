#include "telemetry/SystemPropertyApplier.h"

namespace Velo::OS::Telemetry {

SystemPropertyApplier::SystemPropertyApplier() : IApplier("system_property_applier") {}

EventResult SystemPropertyApplier::apply(std::unique_ptr<TelemetryEvent> event) { return event; }

}  // namespace Velo::OS::Telemetry
