#include <mutex>
#include <string>
#include <unordered_map>

#include "benchmarks/Allocations.h"
#include "benchmarks/MemoryStorage.h"
#include "telemetry/EventSchemaHandler.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

const std::string kKnownName = "arvo_connection_established";

/// A lock and a look into a table.
void floorOfSchema(benchmark::State& state) {
    std::mutex mutex;
    std::unordered_map<std::string, int> categories = {{kKnownName, 1}};
    const Allocations allocations(state);
    for (auto _ : state) {
        const std::lock_guard<std::mutex> lock(mutex);
        benchmark::DoNotOptimize(categories.find(kKnownName)->second);
    }
}

/// Asks for the category of what `name` says; the first name is known before.
template <typename Name>
void askFor(benchmark::State& state, Name name) {
    const auto storage = std::make_shared<MemoryStorage>();
    EventSchemaHandler schema(storage);
    schema.persistEventSchema(R"({"salt":"arvo-2025-03-12"})");
    schema.getEventCategory(name());
    storage->reads = 0;
    {
        const Allocations allocations(state);
        for (auto _ : state) benchmark::DoNotOptimize(schema.getEventCategory(name()));
    }
    state.counters["store reads"] =
        benchmark::Counter(static_cast<double>(storage->reads), benchmark::Counter::kAvgIterations);
}

void knownName(benchmark::State& state) {
    askFor(state, []() -> const std::string& { return kKnownName; });
}

void newName(benchmark::State& state) {
    askFor(state, [number = 0]() mutable { return "arvo_event_" + std::to_string(++number); });
}

BENCHMARK(floorOfSchema)->Name("schema/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(knownName)->Name("schema/known name")->Repetitions(5)->MinTime(0.1);
BENCHMARK(newName)->Name("schema/new name: hash and store read")->Repetitions(5)->MinTime(0.1);

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
