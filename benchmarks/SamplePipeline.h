#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/MemoryStorage.h"
#include "benchmarks/SampleDevice.h"
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
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TelemetryStateGuard.h"
#include "telemetry/VerificationMonitor.h"

namespace Velo::OS::Telemetry::benchmarks {

/// What a pipeline asks and tells, as far as it is not the device.
struct PipelineServices {
    std::shared_ptr<EventSchemaHandler> schema =
        std::make_shared<EventSchemaHandler>(std::make_shared<MemoryStorage>());
    std::shared_ptr<IHealthCountersManager> counters = std::make_shared<NoCounters>();
    std::shared_ptr<SequenceNumberManager> numbers = std::make_shared<CountingNumbers>();
    std::shared_ptr<IRateLimiterConfigManager> limits = std::make_shared<NoLimit>();
};

/// All twenty stages on the device. `report` is told what monitors and guards report. One a process: much of what
/// stages know belongs to the process.
inline std::shared_ptr<TelemetryEventProcessor> makePipelineWith(const PipelineServices& services,
                                                                 const replay::Device& device,
                                                                 const MonitorEventCallback& report) {
    const auto deviceServices = std::make_shared<replay::DeviceServices>(device);
    host::setTelemetrySettings(deviceServices);
    const auto filter = std::make_shared<replay::ConsentFilter>(deviceServices, services.schema);
    const auto rules = std::make_shared<replay::DynamicTelemetryRules>(device.dynamicTelemetry);
    const std::shared_ptr<IHealthCountersManager>& counters = services.counters;

    TelemetryEventProcessorBuilder builder(std::make_shared<NoTracing>(), counters);
    builder.addMonitor(std::make_shared<IntakeMonitor>(report))
        .addMonitor(std::make_shared<SizeLimiterMonitor>(report))
        .addMonitor(std::make_shared<VerificationMonitor>(report))
        .addGuard(std::make_shared<TelemetryStateGuard>(report))
        .addGuard(std::make_shared<PathwayGuard>(report, counters))
        .addGuard(std::make_shared<AccountCheckpointGuard>(report, deviceServices, counters))
        .addGuard(std::make_shared<EventFilterGuard>(report, filter, counters))
        .addGuard(std::make_shared<RateLimiterGuard>(report, counters, services.limits))
        .addGuard(std::make_shared<DynamicTelemetryGuard>(report, rules, counters));
    for (const auto& applier : replay::makeAppliers(deviceServices, services.numbers, nullptr)) {
        builder.addApplier(applier);
    }
    return std::move(builder).build();
}

/// The same with its managers in memory. Events with these identifiers pass the filter.
inline std::shared_ptr<TelemetryEventProcessor> makePipeline(const replay::Device& device,
                                                             const std::vector<std::string>& essential,
                                                             const MonitorEventCallback& report) {
    const PipelineServices services;
    services.schema->persistEventSchema(R"({"timestamp":1741759200000,"salt":"s"})");
    for (const std::string& identifier : essential) {
        services.schema->overrideEventCategory(identifier, IEventSchemaHandler::EventCategory::Essential);
    }
    return makePipelineWith(services, device, report);
}

}  // namespace Velo::OS::Telemetry::benchmarks
