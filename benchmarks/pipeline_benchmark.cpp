#include <map>
#include <memory>
#include <string>

#include "benchmarks/Allocations.h"
#include "benchmarks/MemoryStorage.h"
#include "benchmarks/SampleDevice.h"
#include "benchmarks/SampleEvent.h"
#include "platform/settings/HostTelemetrySettings.h"
#include "replay/ConsentFilter.h"
#include "replay/DeviceAppliers.h"
#include "replay/DynamicTelemetryRules.h"
#include "telemetry/AccountCheckpointGuard.h"
#include "telemetry/DynamicTelemetryGuard.h"
#include "telemetry/EventFilterGuard.h"
#include "telemetry/EventSchemaHandler.h"
#include "telemetry/IntakeMonitor.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/RateLimiterGuard.h"
#include "telemetry/SizeLimiterMonitor.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TelemetryStateGuard.h"
#include "telemetry/VerificationMonitor.h"

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

std::shared_ptr<TelemetryEventProcessor> makePipeline(const replay::Device& device) {
    const auto services = std::make_shared<replay::DeviceServices>(device);
    host::setTelemetrySettings(services);
    const auto schema = std::make_shared<EventSchemaHandler>(std::make_shared<MemoryStorage>());
    schema->persistEventSchema(R"({"timestamp":1741759200000,"salt":"s"})");
    schema->overrideEventCategory(kSampleName, IEventSchemaHandler::EventCategory::Essential);
    const auto filter = std::make_shared<replay::ConsentFilter>(services, schema);
    const auto rules = std::make_shared<replay::DynamicTelemetryRules>(device.dynamicTelemetry);
    const auto counters = std::make_shared<NoCounters>();
    const auto ignore = [](const auto&...) {};

    TelemetryEventProcessorBuilder builder(std::make_shared<NoTracing>(), counters);
    builder.addMonitor(std::make_shared<IntakeMonitor>(ignore))
        .addMonitor(std::make_shared<SizeLimiterMonitor>(ignore))
        .addMonitor(std::make_shared<VerificationMonitor>(ignore))
        .addGuard(std::make_shared<TelemetryStateGuard>(ignore))
        .addGuard(std::make_shared<PathwayGuard>(ignore, counters))
        .addGuard(std::make_shared<AccountCheckpointGuard>(ignore, services, counters))
        .addGuard(std::make_shared<EventFilterGuard>(ignore, filter, counters))
        .addGuard(std::make_shared<RateLimiterGuard>(ignore, counters, std::make_shared<NoLimit>()))
        .addGuard(std::make_shared<DynamicTelemetryGuard>(ignore, rules, counters));
    for (const auto& applier : replay::makeAppliers(services, std::make_shared<CountingNumbers>(), nullptr)) {
        builder.addApplier(applier);
    }
    return std::move(builder).build();
}

void wholePipeline(benchmark::State& state, replay::Device device) {
    const Json::Value sample = sampleData();
    device.intakeGate = true;
    device.filter.enabled = true;
    device.dynamicTelemetry.configs[0] = "c-2025-03-11";
    const auto pipeline = makePipeline(device);
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
