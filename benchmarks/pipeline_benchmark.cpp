#include <map>
#include <memory>
#include <string>

#include "benchmarks/Allocations.h"
#include "benchmarks/SampleDevice.h"
#include "benchmarks/SampleEvent.h"
#include "benchmarks/SamplePipeline.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

/// Makes what leaves the pipeline and writes it.
void floorOfPipeline(benchmark::State& state) {
    const Json::Value sample = sampleData();
    ReusedWriter writer;
    const Allocations allocations(state);
    for (auto _ : state) {
        std::map<std::string, std::string> properties;
        Json::Value document = appliedDocument(sample, properties);
        Json::Value& data = document["data"];
        data["event_schema_timestamp"] = Json::UInt64{1741759200000};
        data["dynamic_telemetry_config_id"] = "c-2025-03-11";
        data["applied_sample_rate"] = Json::UInt64{1};
        properties["consent_state"] = "16";
        benchmark::DoNotOptimize(writer.write(data));

        Json::Value header;
        for (const auto& [key, value] : properties) header[key] = value;
        header["app_id"] = Json::Int64{23};
        header["app_version"] = "8.41.1-beta2";
        benchmark::DoNotOptimize(writer.write(header));
    }
}

void wholePipeline(benchmark::State& state, replay::Device device) {
    const Json::Value sample = sampleData();
    device.intakeGate = true;
    device.filter.enabled = true;
    device.dynamicTelemetry.configs[0] = "c-2025-03-11";
    const auto pipeline = makePipeline(device, {kSampleName}, [](const auto&...) {});
    const auto process = [&] {
        auto event = std::make_unique<TelemetryEventBundle>(kSampleName, sample, kSampleUid, IntakeFormat::JsonBundle);
        const auto processed = pipeline->processEvent(std::move(event)).takeValue();
        benchmark::DoNotOptimize(processed->getJsonString());
        benchmark::DoNotOptimize(processed->getJsonBatchHeaderString());
    };
    process();  // the first event is reported
    const Allocations allocations(state);
    for (auto _ : state) process();
}

void allStages(benchmark::State& state) { wholePipeline(state, sampleDevice()); }

void allStagesVerified(benchmark::State& state) {
    replay::Device device = sampleDevice();
    device.eventsInVerification.insert(kSampleName);
    wholePipeline(state, std::move(device));
}

BENCHMARK(floorOfPipeline)->Name("pipeline/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(allStages)->Name("pipeline/all twenty stages")->Repetitions(5)->MinTime(0.1);
BENCHMARK(allStagesVerified)->Name("pipeline/the same, verified")->Repetitions(5)->MinTime(0.1);

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
