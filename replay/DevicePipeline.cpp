#include "replay/DevicePipeline.h"

#include <android-base/properties.h>
#include <cutils/multiuser.h>

#include <utility>

#include "platform/settings/HostTelemetrySettings.h"
#include "replay/ConsentFilter.h"
#include "replay/CountingRateLimiter.h"
#include "replay/DeviceAppliers.h"
#include "replay/DynamicTelemetryRules.h"
#include "replay/FollowedEvent.h"
#include "telemetry/AccountCheckpointGuard.h"
#include "telemetry/DynamicTelemetryGuard.h"
#include "telemetry/EventFilterGuard.h"
#include "telemetry/IntakeMonitor.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/SizeLimiterMonitor.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TelemetryStateGuard.h"
#include "telemetry/VerificationMonitor.h"

namespace Velo::OS::Telemetry::replay {

DevicePipeline::DevicePipeline(Device device, std::shared_ptr<SequenceNumberManager> sequenceNumbers,
                               std::shared_ptr<IEventSchemaHandler> schema)
    : services_(std::make_shared<DeviceServices>(std::move(device))) {
    for (const auto& [name, value] : services_->device().systemProperties) android::base::SetProperty(name, value);
    host::setTelemetrySettings(services_);

    const MonitorEventCallback report = [this](const android::os::PersistableBundle& envelope, bool /*flag*/,
                                               unsigned int uid) { keepReport(envelope, uid); };
    TelemetryEventProcessorBuilder builder(watch_, watch_);
    const auto append = [this](Journey::Kind kind, const std::string& name) {
        Journey::Stage& stage = stages_.emplace_back();
        stage.kind = kind;
        stage.name = name;
    };
    const std::shared_ptr<IMonitor> monitors[] = {std::make_shared<IntakeMonitor>(report),
                                                  std::make_shared<SizeLimiterMonitor>(report),
                                                  std::make_shared<VerificationMonitor>(report)};
    for (const auto& monitor : monitors) {
        builder.addMonitor(monitor);
        append(Journey::Kind::Monitor, monitor->name_);
    }
    makeGuards(report, std::move(schema));
    for (const Guard& guard : guards_) {
        builder.addGuard(guard.guard);
        append(Journey::Kind::Guard, guard.guard->name_);
    }
    for (const auto& applier : makeAppliers(services_, std::move(sequenceNumbers), watch_)) {
        builder.addApplier(applier);
        append(Journey::Kind::Applier, applier->name_);
    }
    processor_ = std::move(builder).build();
}

/// What may not be kept must not use up the limit of a rate. Sampling comes last: an event that was drawn stands for
/// others, and would be missed more than once.
void DevicePipeline::makeGuards(const MonitorEventCallback& report, std::shared_ptr<IEventSchemaHandler> schema) {
    const auto add = [this](std::shared_ptr<IGuard> guard, std::function<void(Json::Value&)> explain) {
        guards_.push_back({std::move(guard), std::move(explain)});
    };
    add(std::make_shared<TelemetryStateGuard>(report), [this](Json::Value& why) {
        why["reason"] = "state.disabled";
        why["realtime_ms"] = Json::Int64{times_.realtimeMs};
    });
    add(std::make_shared<PathwayGuard>(report, watch_), [this](Json::Value& why) {
        const IntakeFormat format = watch_->sight().format;
        why["reason"] = format == IntakeFormat::GenericAtom ? "pathway.generic_atom" : "pathway.in_verification";
        why["format"] = getFormatName(format);
    });
    add(std::make_shared<AccountCheckpointGuard>(report, services_, watch_), [this](Json::Value& why) {
        why["reason"] = "checkpoint.account";
        why["uid"] = watch_->sight().uid;
        why["user"] = multiuser_get_user_id(watch_->sight().uid);
    });
    const auto filter = std::make_shared<ConsentFilter>(services_, std::move(schema));
    add(std::make_shared<EventFilterGuard>(report, filter, watch_), [this, filter](Json::Value& why) {
        filter->explain(why);
        omitName(why);
    });
    const auto rateLimiter = std::make_shared<CountingRateLimiter>(report, watch_, services_);
    add(rateLimiter, [this, rateLimiter](Json::Value& why) {
        rateLimiter->explain(why);
        omitName(why);
    });
    const auto rules = std::make_shared<DynamicTelemetryRules>(services_->device().dynamicTelemetry);
    add(std::make_shared<DynamicTelemetryGuard>(report, rules, watch_),
        [rules](Json::Value& why) { rules->explain(why); });
}

void DevicePipeline::omitName(Json::Value& why) const {
    if (why["identifier"] == watch_->sight().name) why.removeMember("identifier");
}

void DevicePipeline::keepReport(const android::os::PersistableBundle& envelope, unsigned int uid) {
    MonitorReport& report = reports_.emplace_back();
    try {
        openReport(envelope, uid, times_, report);
    } catch (...) {
        reports_.pop_back();  // half a report would be logged as a whole one
        throw;
    }
    if (Journey* journey = watch_->journey()) journey->report(report);
}

EventResult DevicePipeline::processEvent(std::unique_ptr<TelemetryEventBundle> event, Journey* journey) {
    times_ = timesOf(*event);
    services_->setMoment(times_.realtimeMs);
    watch_->begin(journey);
    droppedBy_ = nullptr;
    if (journey) event = std::make_unique<FollowedEvent>(std::move(*event), *journey);
    EventResult result = processor_->processEvent(std::move(event));
    watch_->end();
    if (result.hasValue()) return result;

    // No applier refuses an event, so it was a guard.
    for (Guard& guard : guards_) {
        if (guard.guard->name_ == watch_->sight().stage) droppedBy_ = &guard;
    }
    if (droppedBy_) ++droppedBy_->dropped;
    return result;
}

Json::Value DevicePipeline::explainDrop() const {
    Json::Value why;
    if (!droppedBy_) return why;
    const std::optional<std::string>& counter = watch_->sight().counter;
    why["guard"] = droppedBy_->guard->name_;
    why["counter"] = counter ? Json::Value(*counter) : Json::Value();
    droppedBy_->explain(why);
    return why;
}

std::vector<MonitorReport> DevicePipeline::takeReports() { return std::exchange(reports_, {}); }

std::vector<std::pair<std::string, uint64_t>> DevicePipeline::drops() const {
    std::vector<std::pair<std::string, uint64_t>> drops;
    drops.reserve(guards_.size());
    for (const Guard& guard : guards_) drops.emplace_back(guard.guard->name_, guard.dropped);
    return drops;
}

}  // namespace Velo::OS::Telemetry::replay
