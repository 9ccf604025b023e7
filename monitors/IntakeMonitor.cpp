#include "telemetry/IntakeMonitor.h"

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "conversion/Immortal.h"
#include "monitors/MonitorEvent.h"
#include "telemetry/LockAnnotations.h"
#include "telemetry/TelemetrySettingsManager.h"
#include "telemetry/TelemetrySorelconfigs.h"

namespace Velo::OS::Telemetry {

namespace {

constexpr char kAuditEventName[] = "telemetry_event_intake_monitor_audit";

/// Names of events, by the uid that logged them.
using EventsByUid = std::unordered_map<uint32_t, std::unordered_set<std::string>>;

std::mutex& lock_ = immortal<std::mutex>();  // taken after a monitor's own lock
EventsByUid& reportedJsonBundleEvents TELEMETRY_GUARDED_BY(lock_) = immortal<EventsByUid>();
EventsByUid& reportedOtherEvents TELEMETRY_GUARDED_BY(lock_) = immortal<EventsByUid>();

EventsByUid& reportedEvents(bool areJsonBundles) TELEMETRY_REQUIRES(lock_) {
    return areJsonBundles ? reportedJsonBundleEvents : reportedOtherEvents;
}

bool isReported(bool isJsonBundle, uint32_t uid, const std::string& name) {
    const std::lock_guard<std::mutex> lock(lock_);
    const EventsByUid& reported = reportedEvents(isJsonBundle);
    const auto names = reported.find(uid);
    return names != reported.end() && names->second.count(name) > 0;
}

void setReported(bool isJsonBundle, uint32_t uid, const std::string& name) {
    const std::lock_guard<std::mutex> lock(lock_);
    reportedEvents(isJsonBundle)[uid].insert(name);
}

}  // namespace

IntakeMonitor::IntakeMonitor(MonitorEventCallback callback) : IMonitor("intake_monitor", std::move(callback)) {}

std::unique_ptr<TelemetryEvent> IntakeMonitor::monitor(std::unique_ptr<TelemetryEvent> event) {
    if (!isGkEnabled()) return event;

    const std::lock_guard<std::mutex> lock(mutex_);
    const uint32_t uid = event->uid();
    const std::string name = event->name();
    const IntakeFormat format = event->getIntakeFormat();
    if (name == kAuditEventName) return event;

    const bool isJsonBundle = isFormatJsonBundle(format);
    if (isReported(isJsonBundle, uid, name)) return event;

    MonitorEvent audit;
    audit.putString("utl_logging_package", event->loggingPackage());
    audit.putString(kKeyEventName, name);
    audit.putString(kKeyIntakeFormat, getFormatName(format));
    // Deliberate: the same text for every format.
    audit.putString(kKeyProcessingPipeline, "JSON Bundle");
    audit.putBoolean(kKeyLowLatency, event->priority());
    audit.send(kAuditEventName, uid, callback_);
    setReported(isJsonBundle, uid, name);  // a report that failed is tried again with the next event
    return event;
}

bool IntakeMonitor::isGkEnabled() {
    static const bool isEnabled =
        TelemetrySettingsManager::instance()->isGkEnabled(TelemetrySorelconfigs::EnableIntakeMonitor);
    return isEnabled;
}

}  // namespace Velo::OS::Telemetry
