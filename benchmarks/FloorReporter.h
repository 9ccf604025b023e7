#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace Velo::OS::Telemetry::benchmarks {

/// Prints one row a benchmark: time, ratio to the floor of its group, allocations, other counters. Benchmarks are named
/// GROUP/WHAT; a group's floor, the work that nobody can save, is named GROUP/floor and comes first. Of several
/// repetitions the fastest counts, because disturbances only ever add time.
class FloorReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

private:
    std::map<std::string, double> floorNs_;  // by group
};

}  // namespace Velo::OS::Telemetry::benchmarks
