#pragma once

#include <cstddef>
#include <vector>

namespace Velo::OS::Telemetry::benchmarks {

/// Work whose cost for one event is measured from outside, as the difference between runs over more and fewer events:
/// what `run` does before its events does not count. Throws std::runtime_error if the work is not what it should be.
struct Case {
    const char* name;
    void (*run)(size_t events, size_t size);  // the size is that of a table or of an event, for cases of growth
};

std::vector<Case> pipelineCases();
std::vector<Case> conversionCases();
std::vector<Case> growthCases();

}  // namespace Velo::OS::Telemetry::benchmarks
