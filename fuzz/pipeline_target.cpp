// All twenty stages over some events. The bytes of the input's first line choose what the injected interfaces answer;
// each other line is an event as `telemetry-replay` reads it.

#include <algorithm>

#include "fuzz/Answers.h"
#include "fuzz/Lines.h"
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
#include "telemetry/TelemetrySorelconfigs.h"
#include "telemetry/TelemetryStateGuard.h"
#include "telemetry/TimestampApplier.h"
#include "telemetry/VerificationMonitor.h"
#include "tests/fakes/FakeGuardServices.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTelemetrySettings.h"

namespace {

using namespace Velo::OS::Telemetry;
using fuzz::Answers;

/// Everything that is injected, its answers chosen before each event.
struct Services {
    std::shared_ptr<fakes::FakeTelemetrySettings> settings = fakes::FakeTelemetrySettings::install();
    std::shared_ptr<fakes::FakeGuardServices> guards = std::make_shared<fakes::FakeGuardServices>();
    std::shared_ptr<fakes::FakeServices> appliers = std::make_shared<fakes::FakeServices>();
};

void answer(Answers& answers, fakes::FakeTelemetrySettings& settings) {
    settings.openGate = TelemetrySorelconfigs::EnableIntakeMonitor;
    settings.enabled = !answers.truth();
    settings.verbose = answers.truth();
    settings.inVerification = answers.truth();
    settings.clockAdjusted = answers.truth();
    settings.accountMode = answers.truth();
    settings.clockAdjustmentMs = answers.number();
    settings.managedMode = static_cast<int32_t>(answers.number());
    settings.telemetryDeviceId = answers.truth() ? std::nullopt : std::optional(answers.text());
    settings.morlekDeviceId = answers.text();
}

void answer(Answers& answers, const TelemetryEvent& event, fakes::FakeGuardServices& guards) {
    guards.rateLimit = {answers.number(), answers.number(), answers.number()};
    guards.checkpointed = {answers.truth() ? event.uid() : 0};
    guards.unwanted = {answers.truth() ? event.name() : ""};
    guards.refused = {answers.truth() ? event.name() : ""};
    guards.sampleRate = answers.rate();
    guards.configId = answers.text();
    guards.logs = {{{{{answers.text(), answers.number()}}, answers.text(), answers.number()}},
                   {{answers.text(), answers.text(), {{answers.text(), answers.number()}}, answers.number()}}};
    guards.fetches = {{answers.text(), answers.text(), answers.number(), FetchOutcome{answers.truth() ? 9 : 1}}};
    guards.filters = answers.truth();
    guards.consents = answers.truth();
    for (bool& fact : guards.facts) fact = answers.truth();
    guards.schemaTimestamp = static_cast<uint64_t>(answers.number());
}

void answer(Answers& answers, fakes::FakeServices& appliers) {
    appliers.userId = answers.text();
    appliers.package = {answers.text(), answers.number(), answers.text()};
    appliers.foreground = {answers.text(), answers.number(), answers.text()};
    appliers.global = static_cast<uint64_t>(answers.number());
    appliers.perType = static_cast<uint64_t>(answers.number());
    appliers.attachToAll = answers.truth();
    appliers.sessions = answers.json();
    appliers.sessionsV2 = answers.text();
    appliers.overrides.clear();
    for (const char* key : {"id", "sdk_app_package_version_name", "sdk_app_package_version_code"}) {
        if (answers.truth()) appliers.overrides[key] = answers.json();
    }
}

/// The callback of all stages: one report under one name, which holds both times.
void requireReport(const android::os::PersistableBundle& envelope, bool flag, unsigned int /*uid*/) {
    const std::set<android::String16> names = envelope.getPersistableBundleKeys();
    fuzz::require(!flag && envelope.size() == 1 && names.size() == 1, "A report is one bundle under its name");
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

void requireKept(TelemetryEvent& event) {
    const std::string text = event.getJsonString();
    const Json::Value data = event.getJsonValue();
    if (!text.empty()) {
        fuzz::requireEqual(text, fuzz::jsoncppText(data), "An event is written as jsoncpp would write it");
        fuzz::requireReadsBack(text, data);
        fuzz::require(data.isMember("timestamp"), "A kept event has been through the last stage", text);
    }
    fuzz::require(fuzz::jsoncppValue(event.getJsonBatchHeaderString()).has_value(), "The header can be read");
    event.getDebugString();
}

/// Each stage that was entered is counted, and a drop is counted once, by its guard; the guard of the telemetry's state
/// alone counts none.
void requireCounted(const std::vector<std::string>& calls, bool isDropped) {
    const auto count = [&](const char* begin) {
        return std::count_if(calls.begin(), calls.end(),
                             [&](const std::string& call) { return call.starts_with(begin); });
    };
    std::string all;
    for (const std::string& call : calls) all.append(call).append("\n");
    fuzz::require(count("trace ") == count("count processor_"), "Each stage that is entered is counted", all);
    const bool wasStateGuard = all.find("\ncount processor_pathway_guard 1\n") == std::string::npos;
    fuzz::require(count("count guard_") == (isDropped && !wasStateGuard ? 1 : 0), "A drop is counted once", all);
}

/// Only these two kinds of events may make the library throw, where the uid in their data is none.
bool mayThrow(const std::string& identifier) {
    return identifier == "arvo_api_permission_state_event" || identifier == "arvo_sensitive_app_ops_monitor";
}

void process(Services& services, std::unique_ptr<TelemetryEventBundle> event) {
    const auto pipeline = makePipeline(services);
    services.guards->take();  // an event that made a stage throw has left its calls
    const std::string identifier = event->getStringIdentifier();
    try {
        EventResult result = pipeline->processEvent(std::move(event));
        requireCounted(services.guards->take(), result.hasError());
        if (result.hasValue()) return requireKept(*result.takeValue());
        fuzz::require(result.error() == std::error_code(EINVAL, std::generic_category()), "Only guards drop events");
    } catch (const Json::LogicError& error) {
        fuzz::require(mayThrow(identifier), "The library does not throw", error.what());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view rest = fuzz::textOf(data, size);
    Answers answers(fuzz::takeUntil('\n', rest));
    Services services;
    replay::EventDecoder decoder;
    while (!rest.empty()) {
        replay::EventDecoder::Decoded decoded = decoder.decode(std::string(fuzz::takeUntil('\n', rest)));
        auto* event = std::get_if<std::unique_ptr<TelemetryEventBundle>>(&decoded);
        if (!event) continue;
        answer(answers, *services.settings);
        answer(answers, **event, *services.guards);
        answer(answers, *services.appliers);
        process(services, std::move(*event));
    }
    return 0;
}
