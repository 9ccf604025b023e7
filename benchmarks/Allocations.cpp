#include "benchmarks/Allocations.h"

#include <cstdint>

namespace {

thread_local uint64_t count = 0;

}  // namespace

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#include "benchmarks/AllocationHooks.h"

void countAllocation() { ++count; }
#endif

namespace Velo::OS::Telemetry::benchmarks {

Allocations::Allocations(benchmark::State& state) : state_(state), before_(count) {}

Allocations::~Allocations() {
    state_.counters["allocations"] =
        benchmark::Counter(static_cast<double>(count - before_), benchmark::Counter::kAvgIterations);
}

}  // namespace Velo::OS::Telemetry::benchmarks
