#include <benchmark/benchmark.h>

#include "benchmarks/SamplePipeline.h"
#include "benchmarks/gate/Cases.h"
#include "telemetry/MonitorEventCache.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

/// What takes turns in a table: few enough to be made beforehand, spread over all of it.
constexpr size_t kTurns = 100;

std::string nameOf(size_t number) { return "arvo_event_" + std::to_string(1'000'000 + number); }

std::unique_ptr<TelemetryEvent> emptyEvent(size_t number, size_t names) {
    auto event = std::make_unique<TelemetryEventBundle>(nameOf(number % names), Json::Value(),
                                                        static_cast<uint32_t>(10'000 + number / names),
                                                        IntakeFormat::JsonBundle);
    event->getStringIdentifier();
    return event;
}

/// Has the stage see `size` events of that many names, and then `count` times one of them.
template <typename Pass>
void passKnown(size_t count, size_t size, size_t names, Pass pass) {
    for (size_t i = 0; i < size; ++i) pass(emptyEvent(i, names));
    std::vector<std::unique_ptr<TelemetryEvent>> known(kTurns);
    for (size_t i = 0; i < kTurns; ++i) known[i] = emptyEvent(i * size / kTurns, names);
    for (size_t i = 0; i < count; ++i) known[i % kTurns] = pass(std::move(known[i % kTurns]));
}

void rateLimiter(size_t count, size_t size) {
    RateLimiterGuard guard(nullptr, std::make_shared<NoCounters>(), std::make_shared<NoLimit>());
    passKnown(count, size, size, [&](auto event) { return guard.handle(std::move(event)).takeValue(); });
}

/// Names and users grow alike.
void intakeMonitor(size_t count, size_t size) {
    replay::Device device;
    device.intakeGate = true;
    host::setTelemetrySettings(std::make_shared<replay::DeviceServices>(device));
    IntakeMonitor monitor([](const auto&...) {});
    size_t names = 1;
    while (names * names < size) ++names;
    passKnown(count, size, names, [&](auto event) { return monitor.monitor(std::move(event)); });
}

/// Looks up `count` times one of `size` names.
template <typename LookUp>
void lookUpKnown(size_t count, size_t size, LookUp lookUp) {
    std::vector<std::string> known(kTurns);
    for (size_t i = 0; i < kTurns; ++i) known[i] = nameOf(i * size / kTurns);
    for (size_t i = 0; i < count; ++i) lookUp(known[i % kTurns]);
}

void filterDecisions(size_t count, size_t size) {
    constexpr uint32_t kUsers = 10;
    const auto decide = [](uint32_t user, const std::string& name) {
        benchmark::DoNotOptimize(MonitorEventCache::checkAndSetFilterDecisionCache(10'000 + user, name, true));
    };
    const size_t names = size / kUsers;
    for (size_t i = 0; i < names; ++i) {
        for (uint32_t user = 0; user < kUsers; ++user) decide(user, nameOf(i));
    }
    lookUpKnown(count, names, [&](const std::string& name) { decide(7, name); });
}

void schemaCategories(size_t count, size_t size) {
    EventSchemaHandler schema(std::make_shared<MemoryStorage>());
    for (size_t i = 0; i < size; ++i) {
        schema.overrideEventCategory(nameOf(i), IEventSchemaHandler::EventCategory::Essential);
    }
    lookUpKnown(count, size, [&](const std::string& name) { benchmark::DoNotOptimize(schema.getEventCategory(name)); });
}

/// The event through the whole pipeline and to its text.
template <typename MakeEvent>
void processLarge(size_t count, MakeEvent make) {
    const auto pipeline = makePipeline(sampleDevice(), {kSampleName}, [](const auto&...) {});
    for (size_t i = 0; i < count; ++i) {
        benchmark::DoNotOptimize(pipeline->processEvent(make()).takeValue()->getJsonString());
    }
}

void members(size_t count, size_t size) {
    Json::Value data;
    for (size_t i = 0; i < size; ++i) data[nameOf(i)] = Json::UInt64{i};
    processLarge(count, [&] {
        return std::make_unique<TelemetryEventBundle>(kSampleName, data, kSampleUid, IntakeFormat::JsonBundle);
    });
}

void bundleEntries(size_t count, size_t size) {
    android::os::PersistableBundle bundle;
    for (size_t i = 0; i < size; ++i) {
        bundle.putLong(android::String16(nameOf(i).c_str()), static_cast<int64_t>(i));
    }
    processLarge(count, [&] { return std::make_unique<TelemetryEventBundle>(kSampleName, kSampleUid, false, bundle); });
}

}  // namespace

std::vector<Case> growthCases() {
    return {{"growth/rate limiter", rateLimiter},     {"growth/filter decisions", filterDecisions},
            {"growth/intake monitor", intakeMonitor}, {"growth/schema categories", schemaCategories},
            {"growth/members of an event", members},  {"growth/entries of a bundle", bundleEntries}};
}

}  // namespace Velo::OS::Telemetry::benchmarks
