#pragma once

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Names of the feature gates that the library asks the settings for.
class TELEMETRY_EXPORT TelemetrySorelconfigs {
public:
    static constexpr char EnableIntakeMonitor[] = "arvo_mobile_telemetry_intake_monitor";
};

}  // namespace Velo::OS::Telemetry
