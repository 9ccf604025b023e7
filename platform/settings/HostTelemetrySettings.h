#pragma once

#include <memory>

#include "telemetry/Export.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry::host {

/// Sets what `TelemetrySettingsManager::instance()` returns from now on, in the whole process. Thread-safe. To be
/// called before anything is made that asks for settings: until then that is null, which no stage checks.
TELEMETRY_EXPORT void setTelemetrySettings(std::shared_ptr<ITelemetrySettingsManager> settings);

}  // namespace Velo::OS::Telemetry::host
