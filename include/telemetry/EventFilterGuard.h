#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "telemetry/IEventFilteringManager.h"
#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"

namespace Velo::OS::Telemetry {

/// "event_filter_guard": drops the events that the filtering manager does not allow.
///
/// It writes on every event the member "event_schema_timestamp" and the property "consent_state" by which it was
/// judged, and gives two kinds of system events the uid of the application that they are about. What would become of
/// an event were filtering switched on is reported as "telemetry_event_filtering_audit" when that is first known of a
/// uid and an identifier, and whenever it changes. Those reports are judged too, but neither marked nor reported.
///
/// The guard holds its lock while it calls a manager or the callback, which must not call back into it.
class TELEMETRY_EXPORT EventFilterGuard : public IGuard {
public:
    /// Neither manager may be null.
    EventFilterGuard(MonitorEventCallback callback, std::shared_ptr<IEventFilteringManager> filteringManager,
                     std::shared_ptr<IHealthCountersManager> healthCounters);

    /// Throws `Json::LogicError` if the member that is to be the event's uid is a text, an array, an object or a number
    /// beyond an int; the event is then lost.
    EventResult handle(std::unique_ptr<TelemetryEvent> event) override;

    /// Returns the same event. Throws as `handle` does.
    std::unique_ptr<TelemetryEvent> setOriginalUid(std::string eventIdentifier, std::unique_ptr<TelemetryEvent> event);
    /// The code for this consent: 32 if given, 16 if not, and 0 while events are not filtered. Sets nothing.
    uint32_t setConsentState(bool userConsent);

private:
    std::shared_ptr<IEventFilteringManager> filteringManager_;
    std::shared_ptr<IHealthCountersManager> healthCounters_;
    std::mutex mutex_;
};

}  // namespace Velo::OS::Telemetry
