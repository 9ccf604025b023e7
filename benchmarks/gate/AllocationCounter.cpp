// Preloaded, it counts the allocations of a program, all threads', and says at the end how many there were.

#include <atomic>
#include <cstdio>

#include "benchmarks/AllocationHooks.h"

namespace {

std::atomic<unsigned long> count;

[[gnu::destructor]] void sayCount() { std::fprintf(stderr, "allocations: %lu\n", count.load()); }

}  // namespace

void countAllocation() { ++count; }
