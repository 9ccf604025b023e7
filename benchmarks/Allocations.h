#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace Velo::OS::Telemetry::benchmarks {

/// Counts the allocations (malloc, calloc, realloc; `new` ends there too) of the thread while it lives and reports them
/// as the counter "allocations" per iteration. Counts nothing under a sanitizer, which has an allocator of its own.
class Allocations {
public:
    explicit Allocations(benchmark::State& state);
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;
    ~Allocations();

private:
    benchmark::State& state_;
    uint64_t before_;
};

}  // namespace Velo::OS::Telemetry::benchmarks
