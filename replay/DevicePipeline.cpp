#include "replay/DevicePipeline.h"

#include <android-base/properties.h>
#include <cutils/multiuser.h>

#include <utility>

#include "platform/settings/HostTelemetrySettings.h"
#include "replay/ConsentFilter.h"
#include "replay/CountingRateLimiter.h"
#include "replay/DeviceAppliers.h"
#include "replay/DynamicTelemetryRules.h"
#include "telemetry/AccountCheckpointGuard.h"
#include "telemetry/DynamicTelemetryGuard.h"
#include "telemetry/EventFilterGuard.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TelemetryStateGuard.h"

namespace Velo::OS::Telemetry::replay {

DevicePipeline::DevicePipeline(Device device, std::shared_ptr<SequenceNumberManager> sequenceNumbers,
                               std::shared_ptr<IEventSchemaHandler> schema)
    : services_(std::make_shared<DeviceServices>(std::move(device))) {
    for (const auto& [name, value] : services_->device().systemProperties) android::base::SetProperty(name, value);
    host::setTelemetrySettings(services_);

    makeGuards(std::move(schema));
    TelemetryEventProcessorBuilder builder(watch_, watch_);
    for (const Guard& guard : guards_) builder.addGuard(guard.guard);
    addAppliers(builder, services_, std::move(sequenceNumbers));
    processor_ = std::move(builder).build();
}

/// What may not be kept must not use up the limit of a rate. Sampling comes last: an event that was drawn stands for
/// others, and would be missed more than once.
void DevicePipeline::makeGuards(std::shared_ptr<IEventSchemaHandler> schema) {
    const MonitorEventCallback report = [this](const android::os::PersistableBundle& envelope, bool /*flag*/,
                                               unsigned int uid) {
        reports_.push_back(openReport(envelope, uid, times_));
    };
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

EventResult DevicePipeline::processEvent(std::unique_ptr<TelemetryEventBundle> event) {
    times_ = timesOf(*event);
    services_->setMoment(times_.realtimeMs);
    watch_->begin();
    droppedBy_ = nullptr;
    EventResult result = processor_->processEvent(std::move(event));
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
