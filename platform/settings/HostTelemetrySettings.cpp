#include "platform/settings/HostTelemetrySettings.h"

#include <mutex>

#include "conversion/Immortal.h"
#include "telemetry/LockAnnotations.h"
#include "telemetry/TelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

namespace {

std::mutex& mutex = immortal<std::mutex>();
auto& current TELEMETRY_GUARDED_BY(mutex) = immortal<std::shared_ptr<ITelemetrySettingsManager>>();

}  // namespace

std::shared_ptr<ITelemetrySettingsManager> TelemetrySettingsManager::instance() {
    const std::lock_guard<std::mutex> lock(mutex);
    return current;
}

void host::setTelemetrySettings(std::shared_ptr<ITelemetrySettingsManager> settings) {
    const std::lock_guard<std::mutex> lock(mutex);
    current.swap(settings);
}

}  // namespace Velo::OS::Telemetry
