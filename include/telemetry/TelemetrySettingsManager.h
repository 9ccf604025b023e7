#pragma once

#include <memory>

#include "telemetry/Export.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

/// The door to the settings library, which defines it.
class TELEMETRY_EXPORT TelemetrySettingsManager {
public:
    /// The process's settings manager; this library relies on there being one. Safe to call from any thread.
    static std::shared_ptr<ITelemetrySettingsManager> instance();
};

}  // namespace Velo::OS::Telemetry
