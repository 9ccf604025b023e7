#include "benchmarks/SamplePipeline.h"
#include "telemetry/TelemetryEventBundle.h"

using namespace Velo::OS::Telemetry;

/// A part of a service that is loaded when it is needed, and the library with it.
extern "C" TELEMETRY_EXPORT void processEvents() {
    const auto pipeline = benchmarks::makePipeline(benchmarks::sampleDevice(), {}, [](const auto&...) {});
    for (int i = 0; i < 100; ++i) {
        auto event = std::make_unique<TelemetryEventBundle>("event_" + std::to_string(i), 10001, true);
        pipeline->processEvent(std::move(event)).takeValue()->getDebugString();
    }
    host::setTelemetrySettings(nullptr);
}
