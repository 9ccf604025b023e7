#include "telemetry/TelemetryEventProcessor.h"

#include <cerrno>
#include <string>
#include <utility>

#include "conversion/Immortal.h"
#include "processor/TraceSlice.h"
#include "telemetry/ApplierBlocklist.h"
#include "telemetry/HealthCounterNames.h"

namespace Velo::OS::Telemetry {

namespace {

/// Copies of the shared names, which are destroyed when the process exits.
struct Names {
    const std::string counterPrefix = kProcessorPrefix;
    const std::string processing = kProcessingLabel;
    const std::string monitor = kMonitorLabel;
    const std::string guard = kGuardLabel;
    const std::string applier = kApplierLabel;
    const std::string blockedApplier = kApplierBlockedLabel;
};

const Names& names = immortal<Names>();

/// Tells the managers, where there are any, which stages one event enters.
class StageReporter {
public:
    StageReporter(IEventTracingManager* tracingManager, IHealthCountersManager* healthCounters)
        : tracingManager_(tracingManager), healthCounters_(healthCounters) {}

    void enter(const std::string& stage, TelemetryEvent* event) {
        trace(stage, event);
        if (healthCounters_) healthCounters_->incrementCounter(counterOf(stage), 1);
    }

    void enterApplier(const std::string& stage, TelemetryEvent* event) {
        // Deliberate: this one stage is counted with the event attached.
        if (stage != "seq_num_applier") return enter(stage, event);
        trace(stage, event);
        if (healthCounters_) healthCounters_->incrementEventCounter(counterOf(stage), *event, 1);
    }

private:
    /// The identifier is read anew for each stage, because a stage may have replaced the event.
    void trace(const std::string& stage, TelemetryEvent* event) {
        if (tracingManager_) tracingManager_->traceEventStage(event->getStringIdentifier(), event->uid(), stage);
    }

    const std::string& counterOf(const std::string& stage) {
        return counter_.assign(names.counterPrefix).append(stage);
    }

    IEventTracingManager* tracingManager_;
    IHealthCountersManager* healthCounters_;
    std::string counter_;  // kept from stage to stage for its memory
};

}  // namespace

TelemetryEventProcessor::TelemetryEventProcessor(std::shared_ptr<IEventTracingManager> tracingManager,
                                                 std::shared_ptr<IHealthCountersManager> healthCounters)
    : tracingManager_(std::move(tracingManager)), healthCounters_(std::move(healthCounters)) {}

TelemetryEventProcessor::TelemetryEventProcessor(TelemetryEventProcessor&& other) noexcept = default;

TelemetryEventProcessor& TelemetryEventProcessor::operator=(TelemetryEventProcessor&& other) noexcept {
    if (this == &other) return *this;
    appliers_ = std::move(other.appliers_);
    guards_ = std::move(other.guards_);
    monitors_ = std::move(other.monitors_);
    tracingManager_ = std::move(other.tracingManager_);
    healthCounters_ = std::move(other.healthCounters_);
    return *this;
}

TelemetryEventProcessor::~TelemetryEventProcessor() = default;

EventResult TelemetryEventProcessor::processEvent(std::unique_ptr<TelemetryEvent> event) const {
    const TraceSlice processing =
        trace::isEnabled() ? TraceSlice(names.processing, event->name()) : TraceSlice::withoutBegin();
    StageReporter reporter(tracingManager_.get(), healthCounters_.get());

    for (const auto& monitor : monitors_) {
        const TraceSlice slice(names.monitor, monitor->name_);
        reporter.enter(monitor->name_, event.get());
        event = monitor->monitor(std::move(event));
    }

    for (const auto& guard : guards_) {
        const TraceSlice slice(names.guard, guard->name_);
        reporter.enter(guard->name_, event.get());
        EventResult verdict = guard->handle(std::move(event));
        // Deliberate: the caller sees one code for every rejection, whatever the guard's own.
        if (verdict.hasError()) return std::error_code(EINVAL, std::generic_category());
        event = verdict.takeValue();
    }

    for (const auto& applier : appliers_) {
        const TraceSlice slice(names.applier, applier->name_);
        if (ApplierBlocklist::hasBlockedEvents(applier->name_) &&
            ApplierBlocklist::isApplierBlocked(applier->name_, event->name())) {
            // Deliberate: a skipped applier is neither reported nor counted.
            TraceSlice(names.blockedApplier, applier->name_).end();
            continue;
        }
        reporter.enterApplier(applier->name_, event.get());
        EventResult result = applier->apply(std::move(event));
        if (result.hasError()) return result;
        event = result.takeValue();
    }

    return event;
}

}  // namespace Velo::OS::Telemetry
