#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "benchmarks/Allocations.h"
#include "benchmarks/MemoryStorage.h"
#include "benchmarks/SampleDevice.h"
#include "benchmarks/SampleEvent.h"
#include "platform/settings/HostTelemetrySettings.h"
#include "replay/ConsentFilter.h"
#include "replay/DeviceServices.h"
#include "replay/DynamicTelemetryRules.h"
#include "telemetry/AccountCheckpointGuard.h"
#include "telemetry/DynamicTelemetryGuard.h"
#include "telemetry/EventFilterGuard.h"
#include "telemetry/EventSchemaHandler.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/RateLimiterGuard.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryStateGuard.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

/// Events whose names, and so their identifiers, are stored in place.
std::unique_ptr<TelemetryEvent> newEvent(size_t number) {
    auto event = std::make_unique<TelemetryEventBundle>("event " + std::to_string(number), Json::Value(), 10123U,
                                                        IntakeFormat::JsonBundle);
    event->getStringIdentifier();
    return event;
}

/// Takes the events one after the other, far apart in memory if there are many.
template <typename Use>
void inTurns(benchmark::State& state, Use use) {
    const auto count = static_cast<size_t>(state.range(0));
    std::vector<std::unique_ptr<TelemetryEvent>> events(count);
    for (size_t i = 0; i < count; ++i) use(events[i] = newEvent(i));
    size_t next = 0;
    const Allocations allocations(state);
    for (auto _ : state) {
        use(events[next]);
        next = (next + 7919) % count;
    }
}

/// A lock, an identifier and a look into a table of that many.
void floorOfGuards(benchmark::State& state) {
    std::mutex mutex;
    std::unordered_map<std::string, int64_t> counts;
    inTurns(state, [&](const std::unique_ptr<TelemetryEvent>& event) {
        const std::lock_guard<std::mutex> lock(mutex);
        benchmark::DoNotOptimize(++counts[event->getStringIdentifier()]);
    });
}

void passThrough(benchmark::State& state, IGuard& guard) {
    inTurns(state, [&](std::unique_ptr<TelemetryEvent>& event) { event = guard.handle(std::move(event)).takeValue(); });
}

const auto counters = std::make_shared<NoCounters>();
const auto services = std::make_shared<replay::DeviceServices>(replay::Device());

void pathway(benchmark::State& state) {
    host::setTelemetrySettings(services);
    PathwayGuard guard(nullptr, counters);
    passThrough(state, guard);
}

void telemetryState(benchmark::State& state) {
    host::setTelemetrySettings(services);
    TelemetryStateGuard guard(nullptr);
    passThrough(state, guard);
}

void accountCheckpoint(benchmark::State& state) {
    AccountCheckpointGuard guard(nullptr, services, counters);
    passThrough(state, guard);
}

void dynamicTelemetry(benchmark::State& state) {
    DynamicTelemetryGuard guard(
        nullptr, std::make_shared<replay::DynamicTelemetryRules>(replay::Device::DynamicTelemetry()), counters);
    passThrough(state, guard);
}

std::unique_ptr<TelemetryEvent> newFullEvent() {
    auto event = std::make_unique<TelemetryEventBundle>("event", sampleData(), 10123U, IntakeFormat::JsonBundle);
    event->getStringIdentifier();
    return event;
}

/// What every floor of guards has, a copy of the event's data and what is written on the event.
void floorOfFilter(benchmark::State& state) {
    std::mutex mutex;
    std::unordered_map<std::string, bool> decisions;
    const std::string key = "event_schema_timestamp";
    const auto event = newFullEvent();
    const Allocations allocations(state);
    for (auto _ : state) {
        const std::lock_guard<std::mutex> lock(mutex);
        benchmark::DoNotOptimize(decisions[event->getStringIdentifier()]);
        benchmark::DoNotOptimize(event->getJsonValue());
        event->addULong(key, 1);
        event->addProperty("consent_state", "32");
    }
}

void eventFilter(benchmark::State& state) {
    replay::Device device;
    device.filter.enabled = true;
    const auto storage = std::make_shared<MemoryStorage>();
    const auto schema = std::make_shared<EventSchemaHandler>(storage);
    schema->persistEventSchema(R"({"timestamp":1741759200000,"salt":"s"})");
    schema->overrideEventCategory("event", IEventSchemaHandler::EventCategory::Essential);
    const auto filter =
        std::make_shared<replay::ConsentFilter>(std::make_shared<replay::DeviceServices>(device), schema);
    EventFilterGuard guard([](const auto&...) {}, filter, counters);
    auto event = guard.handle(newFullEvent()).takeValue();
    storage->reads = 0;
    const Allocations allocations(state);
    for (auto _ : state) event = guard.handle(std::move(event)).takeValue();
    state.counters["store reads"] = static_cast<double>(storage->reads);
}

/// The table belongs to the process: these run in growing order, and each finds what the last one left.
void rateLimiter(benchmark::State& state) {
    RateLimiterGuard guard(nullptr, counters, std::make_shared<NoLimit>());
    passThrough(state, guard);
}

void add(const char* name, void (*benchmark)(benchmark::State&), int64_t names = 1) {
    benchmark::RegisterBenchmark(name, benchmark)->Arg(names)->Repetitions(5)->MinTime(0.1);
}

const bool added = [] {
    add("guards/floor", floorOfGuards);
    add("guards/telemetry state", telemetryState);
    add("guards/pathway", pathway);
    add("guards/account checkpoint", accountCheckpoint);
    add("guards/rate limiter", rateLimiter);
    add("guards/dynamic telemetry", dynamicTelemetry);
    add("event filter/floor", floorOfFilter);
    add("event filter/pass path", eventFilter);
    add("guards, 1,000 names/floor", floorOfGuards, 1000);
    add("guards, 1,000 names/rate limiter", rateLimiter, 1000);
    add("guards, 100,000 names/floor", floorOfGuards, 100'000);
    add("guards, 100,000 names/rate limiter", rateLimiter, 100'000);
    return true;
}();

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
