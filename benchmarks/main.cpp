#include <benchmark/benchmark.h>

#include "benchmarks/FloorReporter.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Velo::OS::Telemetry::benchmarks::FloorReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
