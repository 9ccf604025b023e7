#include "telemetry/DynamicTelemetryGuard.h"

#include <cutils/multiuser.h>

#include <utility>

#include "conversion/Immortal.h"
#include "guards/Rejection.h"
#include "monitors/MonitorEvent.h"
#include "telemetry/DynamicTelemetryPerformance.h"
#include "telemetry/HealthCounterNames.h"

namespace Velo::OS::Telemetry {

namespace {

using Keys = DynamicTelemetryPerformance;

constexpr uint32_t kSystemUid = 1000;  // Deliberate: not the event's, see the header.
const std::string& kConfigIdMember = immortal<std::string>(Keys::kConfigId);
const std::string& kDropCounter = immortal<std::string>(kGuardDynamicTelemetryDropped);

const char* textOf(FetchOutcome outcome) {
    switch (outcome) {
        case FetchOutcome::NoChange:
            return "noChange";
        case FetchOutcome::PersistSuccess:
            return "persistSuccess";
        case FetchOutcome::PersistError:
            return "persistError";
        case FetchOutcome::ParseError:
            return "parseError";
        case FetchOutcome::EndpointError:
            return "endpointError";
        case FetchOutcome::UserTokenEmpty:
            return "userTokenEmpty";
    }
    return "";
}

/// To be called first: a metric may bear the name of a key that is put later.
void putMetrics(const std::unordered_map<std::string, int64_t>& metrics, MonitorEvent& event) {
    for (const auto& [key, value] : metrics) event.putLong(key.c_str(), value);
}

void report(const IDynamicTelemetryPerformance::GuardPerformanceLog& log, const MonitorEventCallback& callback) {
    MonitorEvent event;
    putMetrics(log.metrics, event);
    event.putLong(Keys::kLoggingDuration, log.loggingDurationMs);
    event.putString(Keys::kConfigId, log.configId);
    event.send(Keys::kGuardEventName, kSystemUid, callback);
}

void report(const IDynamicTelemetryPerformance::MonitorLog& log, const MonitorEventCallback& callback) {
    MonitorEvent event;
    putMetrics(log.metrics, event);
    event.putLong(Keys::kMonitorLoggingDuration, log.loggingDurationMs);
    event.putString(Keys::kMonitorConfigId, log.configId);
    event.putString(Keys::kProcessedEventName, log.processedEventName);
    event.send(Keys::kMonitorEventName, kSystemUid, callback);
}

void report(const ConfigFetchLog& fetch, const MonitorEventCallback& callback) {
    MonitorEvent event;
    if (fetch.fetchedConfigId) event.putString(Keys::kFetchedConfigId, *fetch.fetchedConfigId);
    event.putString(Keys::kActiveConfigId, fetch.activeConfigId);
    event.putLong(Keys::kFetchFinishedMs, fetch.fetchFinished / 1000);
    event.putString(Keys::kFetchOutcome, textOf(fetch.outcome));
    event.send(Keys::kConfigFetchEventName, kSystemUid, callback);
}

}  // namespace

DynamicTelemetryGuard::DynamicTelemetryGuard(MonitorEventCallback callback,
                                             std::shared_ptr<IDynamicTelemetryManager> manager,
                                             std::shared_ptr<IHealthCountersManager> healthCounters)
    : IGuard("dynamic_telemetry_guard", std::move(callback)),
      manager_(std::move(manager)),
      healthCounters_(std::move(healthCounters)) {}

EventResult DynamicTelemetryGuard::handle(std::unique_ptr<TelemetryEvent> event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const DynamicTelemetryDecision decision = manager_->evaluateEvent(*event);
    const PerformanceLogs logs = manager_->takePerformanceLogs();
    for (const auto& log : logs.guardLogs) report(log, callback_);
    for (const auto& log : logs.monitorLogs) report(log, callback_);
    for (const auto& fetch : manager_->takeConfigFetchLogs()) report(fetch, callback_);

    if (!decision.shouldLog) return reject(*event, kDropCounter, *healthCounters_);
    event->addString(kConfigIdMember, manager_->getActiveConfigId(multiuser_get_user_id(event->uid())));
    event->setSampleRate(decision.sampleRate);
    return event;
}

}  // namespace Velo::OS::Telemetry
