#include <vector>

#include "benchmarks/Allocations.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

class PassingMonitor : public IMonitor {
public:
    PassingMonitor() : IMonitor("passing_monitor", nullptr) {}
    std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) override { return event; }
};

class PassingGuard : public IGuard {
public:
    PassingGuard() : IGuard("passing_guard", nullptr) {}
    EventResult handle(std::unique_ptr<TelemetryEvent> event) override { return event; }
};

class PassingApplier : public IApplier {
public:
    PassingApplier() : IApplier("passing_applier") {}
    EventResult apply(std::unique_ptr<TelemetryEvent> event) override { return event; }
};

std::unique_ptr<TelemetryEvent> newEvent() {
    return std::make_unique<TelemetryEventBundle>("app_launch_finished", 10123U, false);
}

/// Ten virtual calls that hand a pointer on.
void floorOfProcessing(benchmark::State& state) {
    const std::vector<std::shared_ptr<IMonitor>> stages(10, std::make_shared<PassingMonitor>());
    std::unique_ptr<TelemetryEvent> event = newEvent();
    const Allocations allocations(state);
    for (auto _ : state) {
        for (const auto& stage : stages) event = stage->monitor(std::move(event));
        benchmark::DoNotOptimize(event);
    }
}

void process(benchmark::State& state, const TelemetryEventProcessor& processor) {
    std::unique_ptr<TelemetryEvent> event = newEvent();
    const Allocations allocations(state);
    for (auto _ : state) event = processor.processEvent(std::move(event)).takeValue();
}

void emptyProcessor(benchmark::State& state) {
    process(state, *TelemetryEventProcessorBuilder(nullptr, nullptr).build());
}

void tenStages(benchmark::State& state) {
    TelemetryEventProcessorBuilder builder(nullptr, nullptr);
    for (int i = 0; i < 2; ++i) builder.addMonitor(std::make_shared<PassingMonitor>());
    for (int i = 0; i < 3; ++i) builder.addGuard(std::make_shared<PassingGuard>());
    for (int i = 0; i < 5; ++i) builder.addApplier(std::make_shared<PassingApplier>());
    process(state, *std::move(builder).build());
}

BENCHMARK(floorOfProcessing)->Name("processor/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(emptyProcessor)->Name("processor/no stages")->Repetitions(5)->MinTime(0.1);
BENCHMARK(tenStages)->Name("processor/ten stages that pass")->Repetitions(5)->MinTime(0.1);

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
