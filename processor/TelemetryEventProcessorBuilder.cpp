#include "telemetry/TelemetryEventProcessorBuilder.h"

#include <utility>

namespace Velo::OS::Telemetry {

using Builder = TelemetryEventProcessorBuilder;

Builder::TelemetryEventProcessorBuilder(std::shared_ptr<IEventTracingManager> tracingManager,
                                        std::shared_ptr<IHealthCountersManager> healthCounters)
    // Deliberate: not one allocation with its count, so that its memory goes when the last owner does.
    : processor_(new TelemetryEventProcessor(std::move(tracingManager), std::move(healthCounters))) {}

Builder::TelemetryEventProcessorBuilder(Builder&& other) noexcept = default;
Builder& Builder::operator=(Builder&& other) noexcept = default;
Builder::~TelemetryEventProcessorBuilder() = default;

Builder& Builder::addApplier(std::shared_ptr<IApplier> applier) & {
    processor_->appliers_.push_back(std::move(applier));
    return *this;
}

Builder&& Builder::addApplier(std::shared_ptr<IApplier> applier) && {
    return std::move(addApplier(std::move(applier)));
}

Builder& Builder::addGuard(std::shared_ptr<IGuard> guard) & {
    processor_->guards_.push_back(std::move(guard));
    return *this;
}

Builder&& Builder::addGuard(std::shared_ptr<IGuard> guard) && { return std::move(addGuard(std::move(guard))); }

Builder& Builder::addMonitor(std::shared_ptr<IMonitor> monitor) & {
    processor_->monitors_.push_back(std::move(monitor));
    return *this;
}

Builder&& Builder::addMonitor(std::shared_ptr<IMonitor> monitor) && {
    return std::move(addMonitor(std::move(monitor)));
}

std::shared_ptr<TelemetryEventProcessor> Builder::build() && { return std::move(processor_); }

}  // namespace Velo::OS::Telemetry
