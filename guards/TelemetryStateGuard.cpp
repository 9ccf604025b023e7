#include "telemetry/TelemetryStateGuard.h"

#include <utility>

#include "guards/Rejection.h"
#include "telemetry/TelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

TelemetryStateGuard::TelemetryStateGuard(MonitorEventCallback callback)
    : IGuard("telemetry_state_guard", std::move(callback)) {}

EventResult TelemetryStateGuard::handle(std::unique_ptr<TelemetryEvent> event) {
    if (getSettings()->isTelemetryEnabled()) return event;
    // Deliberate: the only drop that no counter shows but the stage's own.
    return rejection();
}

std::shared_ptr<ITelemetrySettingsManager> TelemetryStateGuard::getSettings() const {
    return TelemetrySettingsManager::instance();
}

}  // namespace Velo::OS::Telemetry
