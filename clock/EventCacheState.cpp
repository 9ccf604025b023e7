#include "telemetry/EventCacheState.h"

#include "telemetry/QvLoggerWrapper.h"
#include "telemetry/TelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

EventCacheState::EventCacheState() { adjustTimeIfNeeded(); }

void EventCacheState::adjustTimeIfNeeded() {
    if (TelemetrySettingsManager::instance()->isEventCacheTimeAdjusted()) return;
    const int64_t adjustmentMs = TelemetrySettingsManager::instance()->getClockAdjustmentMs();
    telemetry::QvLoggerWrapper::instance().adjustTime(adjustmentMs, adjustTimeSuccessCallback());
}

void (*EventCacheState::adjustTimeSuccessCallback())() {
    // Deliberate: the first one that asks is recorded, although the callback needs none.
    [[maybe_unused]] static const EventCacheState* const first = this;
    return [] { TelemetrySettingsManager::instance()->setEventCacheTimeAdjusted(true); };
}

}  // namespace Velo::OS::Telemetry
