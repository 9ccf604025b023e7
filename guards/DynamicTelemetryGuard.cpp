#include "telemetry/DynamicTelemetryGuard.h"

#include <cutils/multiuser.h>

#include <utility>

#include "guards/Rejection.h"
#include "monitors/MonitorEvent.h"
#include "telemetry/DynamicTelemetryPerformance.h"
#include "telemetry/HealthCounterNames.h"

namespace Velo::OS::Telemetry {

namespace {

using Keys = DynamicTelemetryPerformance;

constexpr uint32_t kSystemUid = 1000;
const std::string kConfigId = Keys::kConfigId;

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
void putMetrics(const std::unordered_map<std::string, int64_t>& metrics, MonitorEvent& report) {
    for (const auto& [key, value] : metrics) report.putLong(key, value);
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
    for (const auto& log : logs.guardLogs) report(log);
    for (const auto& log : logs.monitorLogs) report(log);
    for (const auto& fetch : manager_->takeConfigFetchLogs()) report(fetch);

    if (!decision.shouldLog) return reject(*event, kGuardDynamicTelemetryDropped, *healthCounters_);
    event->addString(kConfigId, manager_->getActiveConfigId(multiuser_get_user_id(event->uid())));
    event->setSampleRate(decision.sampleRate);
    return event;
}

void DynamicTelemetryGuard::report(const IDynamicTelemetryPerformance::GuardPerformanceLog& log) const {
    MonitorEvent report;
    putMetrics(log.metrics, report);
    report.putLong(Keys::kLoggingDuration, log.loggingDurationMs);
    report.putString(Keys::kConfigId, log.configId);
    report.send(Keys::kGuardEventName, kSystemUid, callback_);
}

void DynamicTelemetryGuard::report(const IDynamicTelemetryPerformance::MonitorLog& log) const {
    MonitorEvent report;
    putMetrics(log.metrics, report);
    report.putLong(Keys::kMonitorLoggingDuration, log.loggingDurationMs);
    report.putString(Keys::kMonitorConfigId, log.configId);
    report.putString(Keys::kProcessedEventName, log.processedEventName);
    report.send(Keys::kMonitorEventName, kSystemUid, callback_);
}

void DynamicTelemetryGuard::report(const ConfigFetchLog& fetch) const {
    MonitorEvent report;
    if (fetch.fetchedConfigId) report.putString(Keys::kFetchedConfigId, *fetch.fetchedConfigId);
    report.putString(Keys::kActiveConfigId, fetch.activeConfigId);
    report.putLong(Keys::kFetchFinishedMs, fetch.fetchFinished / 1000);
    report.putString(Keys::kFetchOutcome, textOf(fetch.outcome));
    report.send(Keys::kConfigFetchEventName, kSystemUid, callback_);
}

}  // namespace Velo::OS::Telemetry
