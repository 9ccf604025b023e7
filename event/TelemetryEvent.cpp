#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

TelemetryEvent::~TelemetryEvent() = default;

}  // namespace Velo::OS::Telemetry
