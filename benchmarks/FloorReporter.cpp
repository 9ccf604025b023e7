#include "benchmarks/FloorReporter.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace Velo::OS::Telemetry::benchmarks {

bool FloorReporter::ReportContext(const Context& /*context*/) {
    std::printf("%-52s %12s %9s %12s\n", "benchmark", "ns", "x floor", "allocations");
    return true;
}

void FloorReporter::ReportRuns(const std::vector<Run>& runs) {
    double bestNs = std::numeric_limits<double>::infinity();
    double allocations = 0;
    std::string others;
    std::string name;
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration) continue;
        if (run.error_occurred) {
            std::printf("%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
            return;
        }
        name = run.run_name.function_name;
        bestNs = std::min(bestNs, run.GetAdjustedCPUTime());
        others.clear();
        for (const auto& [title, count] : run.counters) {
            if (title == "allocations") {
                allocations = count;
            } else {
                char text[64];
                std::snprintf(text, sizeof(text), "  %.1f %s", count.value, title.c_str());
                others += text;
            }
        }
    }
    if (name.empty()) return;  // the means and medians of the repetitions
    const size_t slash = name.find('/');
    const std::string group = name.substr(0, slash);
    if (name.substr(slash + 1) == "floor") floorNs_[group] = bestNs;
    const auto floor = floorNs_.find(group);
    const double ratio = floor == floorNs_.end() ? std::numeric_limits<double>::quiet_NaN() : bestNs / floor->second;
    std::printf("%-52s %12.1f %9.2f %12.1f%s\n", name.c_str(), bestNs, ratio, allocations, others.c_str());
    std::fflush(stdout);
}

}  // namespace Velo::OS::Telemetry::benchmarks
