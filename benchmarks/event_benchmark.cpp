#include "benchmarks/Allocations.h"
#include "benchmarks/SampleEvent.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

TelemetryEventBundle jsonEvent() { return {"app_launch_finished", sampleData(), 10123, IntakeFormat::JsonBundle}; }

TelemetryEventBundle bundleEvent() {
    android::os::PersistableBundle bundle;
    bundle.putLong(android::String16("utl_realtime_ms"), 8452311);
    bundle.putString(android::String16("utl_logging_package"), android::String16("com.example.shell"));
    return {"app_launch_finished", 10123, false, bundle};
}

void floorOfLookup(benchmark::State& state) {
    const Json::Value data = sampleData();
    const std::string key = "utl_realtime_ms";
    const Allocations allocations(state);
    for (auto _ : state) benchmark::DoNotOptimize(data.find(key.data(), key.data() + key.size())->asInt64());
}

void numberOfJsonEvent(benchmark::State& state) {
    const TelemetryEventBundle event = jsonEvent();
    const Allocations allocations(state);
    for (auto _ : state) benchmark::DoNotOptimize(event.clientCreatedTime());
}

void numberOfBundleEvent(benchmark::State& state) {
    const TelemetryEventBundle event = bundleEvent();
    const Allocations allocations(state);
    for (auto _ : state) benchmark::DoNotOptimize(event.clientCreatedTime());
}

void textOfJsonEvent(benchmark::State& state) {
    const TelemetryEventBundle event = jsonEvent();
    const Allocations allocations(state);
    for (auto _ : state) benchmark::DoNotOptimize(event.loggingPackage());
}

/// Both writing benchmarks change one member each time, so that no text can be kept.
void floorOfWriting(benchmark::State& state) {
    Json::Value data = sampleData();
    ReusedWriter writer;
    const Allocations allocations(state);
    for (auto _ : state) {
        data["seq"] = 5;
        benchmark::DoNotOptimize(writer.write(data));
    }
}

void coldJsonString(benchmark::State& state) {
    TelemetryEventBundle event = jsonEvent();
    const Allocations allocations(state);
    for (auto _ : state) {
        event.addInt("seq", 5);
        benchmark::DoNotOptimize(event.getJsonString().data());
    }
}

void cachedJsonString(benchmark::State& state) {
    TelemetryEventBundle event = jsonEvent();
    const Allocations allocations(state);
    for (auto _ : state) benchmark::DoNotOptimize(event.getJsonString().data());
}

void floorOfIdentifier(benchmark::State& state) {
    const std::string name = "app_launch_finished";
    const Allocations allocations(state);
    for (auto _ : state) {
        std::string copy = name;
        benchmark::DoNotOptimize(copy);
    }
}

void stringIdentifier(benchmark::State& state) {
    TelemetryEventBundle event = jsonEvent();
    const Allocations allocations(state);
    for (auto _ : state) benchmark::DoNotOptimize(event.getStringIdentifier());
}

BENCHMARK(floorOfLookup)->Name("accessor/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(numberOfJsonEvent)->Name("accessor/number of a JSON event")->Repetitions(5)->MinTime(0.1);
BENCHMARK(textOfJsonEvent)->Name("accessor/text of a JSON event")->Repetitions(5)->MinTime(0.1);
BENCHMARK(numberOfBundleEvent)->Name("accessor/number of an unconverted bundle event")->Repetitions(5)->MinTime(0.1);
BENCHMARK(floorOfWriting)->Name("writing/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(coldJsonString)->Name("writing/getJsonString cold")->Repetitions(5)->MinTime(0.1);
BENCHMARK(cachedJsonString)->Name("writing/getJsonString cached")->Repetitions(5)->MinTime(0.1);
BENCHMARK(floorOfIdentifier)->Name("identifier/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(stringIdentifier)->Name("identifier/getStringIdentifier")->Repetitions(5)->MinTime(0.1);

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
