#include "benchmarks/Allocations.h"

#include <cstddef>

namespace {

thread_local uint64_t count = 0;

}  // namespace

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// glibc lets a program put its own functions in front of the allocator's.
extern "C" {
void* __libc_malloc(size_t size);                  // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(size_t number, size_t size);   // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* pointer, size_t size);  // NOLINT(bugprone-reserved-identifier)

void* malloc(size_t size) {
    ++count;
    return __libc_malloc(size);
}

void* calloc(size_t number, size_t size) {
    ++count;
    return __libc_calloc(number, size);
}

void* realloc(void* pointer, size_t size) {
    ++count;
    return __libc_realloc(pointer, size);
}
}
#endif

namespace Velo::OS::Telemetry::benchmarks {

Allocations::Allocations(benchmark::State& state) : state_(state), before_(count) {}

Allocations::~Allocations() {
    state_.counters["allocations"] =
        benchmark::Counter(static_cast<double>(count - before_), benchmark::Counter::kAvgIterations);
}

}  // namespace Velo::OS::Telemetry::benchmarks
