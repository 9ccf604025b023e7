#include <map>
#include <string>

#include "benchmarks/Allocations.h"
#include "benchmarks/SampleDevice.h"
#include "benchmarks/SampleEvent.h"
#include "platform/settings/HostTelemetrySettings.h"
#include "replay/DeviceAppliers.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

/// Makes the event's document and inserts what the appliers insert.
void floorOfAppliers(benchmark::State& state) {
    const Json::Value sample = sampleData();
    const Allocations allocations(state);
    for (auto _ : state) {
        std::map<std::string, std::string> properties;
        benchmark::DoNotOptimize(appliedDocument(sample, properties));
        benchmark::DoNotOptimize(properties);
    }
}

/// The same through an event, the eleven appliers and services that look everything up.
void elevenAppliers(benchmark::State& state) {
    const Json::Value sample = sampleData();
    const auto services = std::make_shared<replay::DeviceServices>(sampleDevice());
    host::setTelemetrySettings(services);
    TelemetryEventProcessorBuilder builder(nullptr, nullptr);
    for (const auto& applier : replay::makeAppliers(services, std::make_shared<CountingNumbers>(), nullptr)) {
        builder.addApplier(applier);
    }
    const auto pipeline = std::move(builder).build();
    const Allocations allocations(state);
    for (auto _ : state) {
        auto event = std::make_unique<TelemetryEventBundle>(kSampleName, sample, kSampleUid, IntakeFormat::JsonBundle);
        benchmark::DoNotOptimize(pipeline->processEvent(std::move(event)).takeValue());
    }
}

BENCHMARK(floorOfAppliers)->Name("appliers/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(elevenAppliers)->Name("appliers/all eleven")->Repetitions(5)->MinTime(0.1);

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
