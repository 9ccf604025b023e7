// All twenty stages over some events. The bytes of the input's first line choose what the injected interfaces answer;
// each other line is an event as `telemetry-replay` reads it.

#include <algorithm>

#include "fuzz/Lines.h"
#include "fuzz/PlainPipeline.h"
#include "fuzz/Services.h"
#include "replay/EventDecoder.h"
#include "telemetry/AccountCheckpointGuard.h"
#include "telemetry/ApplicationInfoApplier.h"
#include "telemetry/DeviceIDApplier.h"
#include "telemetry/DeviceInfoApplier.h"
#include "telemetry/DeviceSettingApplier.h"
#include "telemetry/DynamicTelemetryGuard.h"
#include "telemetry/EventFilterGuard.h"
#include "telemetry/IdentityApplier.h"
#include "telemetry/IntakeMonitor.h"
#include "telemetry/OSUtilsDeviceIdApplier.h"
#include "telemetry/PackageInfoApplier.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/RateLimiterGuard.h"
#include "telemetry/SequenceNumberApplier.h"
#include "telemetry/SessionsApplier.h"
#include "telemetry/SizeLimiterMonitor.h"
#include "telemetry/SystemPropertyApplier.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TelemetryStateGuard.h"
#include "telemetry/TimestampApplier.h"
#include "telemetry/VerificationMonitor.h"

namespace {

using namespace Velo::OS::Telemetry;
using fuzz::PlainPipeline;
using fuzz::Services;

constexpr const char* kReports[] = {
    "telemetry_event_intake_monitor_audit",
    "event_size_limit_breach",
    "arvo_mobile_telemetry_statsd_verification_monitor",
    "arvo_telemetry_checkpoint_status_monitor",
    "telemetry_event_filtering_audit",
    "telemetry_service_event_rate_limit_breach",
    "telemetry_service_dynamic_telemetry_guard_performance",
    "telemetry_service_dynamic_telemetry_monitor",
    "telemetry_service_dynamic_telemetry_config_performance",
};

/// The callback of all stages: one report under one name, which holds both times.
void requireReport(const android::os::PersistableBundle& envelope, bool flag, unsigned int /*uid*/) {
    const std::set<android::String16> names = envelope.getPersistableBundleKeys();
    fuzz::require(!flag && envelope.size() == 1 && names.size() == 1, "A report is one bundle under its name");
    const std::string name = android::String8(*names.begin()).c_str();
    fuzz::require(std::count(std::begin(kReports), std::end(kReports), name) == 1, "A report has a known name", name);
    android::os::PersistableBundle body;
    envelope.getPersistableBundle(*names.begin(), &body);
    for (const char* key : {"utl_uptime_ms", "utl_realtime_ms"}) {
        int64_t timeMs = -1;
        fuzz::require(body.getLong(android::String16(key), &timeMs), "A report holds both times", key);
    }
    Json::Value json;
    fuzz::require(convertBundleToJson(body, json), "A report can be converted");
}

std::shared_ptr<TelemetryEventProcessor> makePipeline(const Services& services) {
    const auto& guards = services.guards;
    const auto& appliers = services.appliers;
    TelemetryEventProcessorBuilder builder(guards, guards);
    builder.addMonitor(std::make_shared<IntakeMonitor>(requireReport))
        .addMonitor(std::make_shared<SizeLimiterMonitor>(requireReport))
        .addMonitor(std::make_shared<VerificationMonitor>(requireReport))
        .addGuard(std::make_shared<TelemetryStateGuard>(requireReport))
        .addGuard(std::make_shared<PathwayGuard>(requireReport, guards))
        .addGuard(std::make_shared<AccountCheckpointGuard>(requireReport, guards, guards))
        .addGuard(std::make_shared<EventFilterGuard>(requireReport, guards, guards))
        .addGuard(std::make_shared<RateLimiterGuard>(requireReport, guards, guards))
        .addGuard(std::make_shared<DynamicTelemetryGuard>(requireReport, guards, guards))
        .addApplier(std::make_shared<DeviceInfoApplier>(
            std::make_unique<DeviceIDApplier>(), std::make_unique<OSUtilsDeviceIdApplier>(),
            std::make_unique<DeviceSettingApplier>(), std::make_unique<SystemPropertyApplier>()))
        .addApplier(std::make_shared<IdentityApplier>(appliers, appliers))
        .addApplier(std::make_shared<ApplicationInfoApplier>(std::make_unique<PackageInfoApplier>(appliers, appliers),
                                                             appliers))
        .addApplier(std::make_shared<SequenceNumberApplier>(appliers))
        .addApplier(std::make_shared<SessionsApplier>(appliers))
        .addApplier(std::make_shared<TimestampApplier>(std::make_shared<AdjustedClock>()));
    return std::move(builder).build();
}

void requireKept(TelemetryEvent& event, const PlainPipeline& plain) {
    plain.requireLike(event);
    const std::string text = event.getJsonString();
    const Json::Value data = event.getJsonValue();
    if (!text.empty()) {
        fuzz::requireEqual(text, fuzz::jsoncppText(data), "An event is written as jsoncpp would write it");
        fuzz::requireReadsBack(text, data);
    }
    fuzz::require(fuzz::jsoncppValue(event.getJsonBatchHeaderString()).has_value(), "The header can be read");
    event.getDebugString();
}

/// Stages are traced and counted as the event enters them, a drop by its guard alone, and numbers are drawn for what is
/// kept.
void requireToldOf(const std::vector<std::string>& calls, const PlainPipeline& plain, const Services& services) {
    const auto joined = [](const std::vector<std::string>& from) {
        std::string lines;
        for (const std::string& call : from) {
            if (call.starts_with("trace ") || call.starts_with("count ")) lines.append(call).append("\n");
        }
        return lines;
    };
    fuzz::requireEqual(joined(calls), joined(plain.calls()), "The managers are told what becomes of an event");
    const std::vector<std::string> asked = services.appliers->takeCalls();
    const auto drawn =
        std::count_if(asked.begin(), asked.end(), [](const std::string& call) { return call.starts_with("global "); });
    fuzz::require(drawn == (plain.end() == PlainPipeline::End::Kept ? 1 : 0), "A number is drawn for each kept event");
}

/// `twin` is an event like the one processed.
void process(const Services& services, std::unique_ptr<TelemetryEventBundle> event, TelemetryEventBundle& twin) {
    const auto pipeline = makePipeline(services);
    std::optional<EventResult> result;
    try {
        result = pipeline->processEvent(std::move(event));
    } catch (const Json::LogicError&) {
    }
    const std::vector<std::string> calls = services.guards->take();
    const PlainPipeline plain(twin, services, calls);
    requireToldOf(calls, plain, services);
    fuzz::require(result.has_value() == (plain.end() != PlainPipeline::End::Thrown),
                  "The library throws of a uid that is none and of nothing else", twin.getJsonString());
    if (!result) return;
    fuzz::require(result->hasValue() == (plain.end() == PlainPipeline::End::Kept), "Only guards drop events");
    if (result->hasValue()) return requireKept(*result->takeValue(), plain);
    fuzz::require(result->error() == std::error_code(EINVAL, std::generic_category()), "All drops have one code");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using Event = std::unique_ptr<TelemetryEventBundle>;
    std::string_view rest = fuzz::textOf(data, size);
    fuzz::Answers answers(fuzz::takeUntil('\n', rest));
    const Services services;
    replay::EventDecoder decoder;
    while (!rest.empty()) {
        const std::string line(fuzz::takeUntil('\n', rest));
        replay::EventDecoder::Decoded decoded = decoder.decode(line);
        replay::EventDecoder::Decoded twin = decoder.decode(line);
        auto* event = std::get_if<Event>(&decoded);
        if (!event) continue;
        answer(answers, *services.settings);
        answer(answers, **event, *services.guards);
        answer(answers, *services.appliers);
        process(services, std::move(*event), *std::get<Event>(twin));
    }
    return 0;
}
