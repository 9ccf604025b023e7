#pragma once

#include <memory>

#include "telemetry/Export.h"
#include "telemetry/TelemetryEventProcessor.h"

namespace Velo::OS::Telemetry {

/// Collects the stages of a processor. Stages run in the order in which they are added; none is checked for null.
class TELEMETRY_EXPORT TelemetryEventProcessorBuilder {
public:
    /// Either manager may be null.
    TelemetryEventProcessorBuilder(std::shared_ptr<IEventTracingManager> tracingManager,
                                   std::shared_ptr<IHealthCountersManager> healthCounters);
    TelemetryEventProcessorBuilder(TelemetryEventProcessorBuilder&& other) noexcept;
    TelemetryEventProcessorBuilder& operator=(TelemetryEventProcessorBuilder&& other) noexcept;
    ~TelemetryEventProcessorBuilder();

    TelemetryEventProcessorBuilder& addApplier(std::shared_ptr<IApplier> applier) &;
    TelemetryEventProcessorBuilder&& addApplier(std::shared_ptr<IApplier> applier) &&;
    TelemetryEventProcessorBuilder& addGuard(std::shared_ptr<IGuard> guard) &;
    TelemetryEventProcessorBuilder&& addGuard(std::shared_ptr<IGuard> guard) &&;
    TelemetryEventProcessorBuilder& addMonitor(std::shared_ptr<IMonitor> monitor) &;
    TelemetryEventProcessorBuilder&& addMonitor(std::shared_ptr<IMonitor> monitor) &&;

    /// Hands the processor over; the builder is spent afterwards.
    std::shared_ptr<TelemetryEventProcessor> build() &&;

private:
    std::shared_ptr<TelemetryEventProcessor> processor_;
};

}  // namespace Velo::OS::Telemetry
