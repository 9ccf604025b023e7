#pragma once

#include <memory>
#include <vector>

#include "telemetry/EventResult.h"
#include "telemetry/Export.h"
#include "telemetry/IApplier.h"
#include "telemetry/IEventTracingManager.h"
#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"
#include "telemetry/IMonitor.h"

/// All that this library exports, but for the three plain globals of `IntakeFormat.h`.
namespace Velo::OS::Telemetry {

/// Runs every monitor, then every guard, then every applier over an event, in the order in which they were added.
/// Made by `TelemetryEventProcessorBuilder`.
class TELEMETRY_EXPORT TelemetryEventProcessor {
public:
    /// Either manager may be null: then stages are not reported to it.
    TelemetryEventProcessor(std::shared_ptr<IEventTracingManager> tracingManager,
                            std::shared_ptr<IHealthCountersManager> healthCounters);
    /// Both leave `other` without stages and managers.
    TelemetryEventProcessor(TelemetryEventProcessor&& other) noexcept;
    TelemetryEventProcessor& operator=(TelemetryEventProcessor&& other) noexcept;
    ~TelemetryEventProcessor();

    /// The enriched event; or EINVAL in the generic category if a guard rejected it; or the error of the applier that
    /// failed, unchanged. In both cases of error the event is gone.
    ///
    /// The event must not be null, and no stage may return a null one: neither is looked at before it is used.
    ///
    /// A guard or applier that returns an empty result aborts the process. What a stage throws passes through.
    ///
    /// Several threads may call it at once: it keeps nothing and takes no lock.
    EventResult processEvent(std::unique_ptr<TelemetryEvent> event) const;

private:
    friend class TelemetryEventProcessorBuilder;

    std::vector<std::shared_ptr<IApplier>> appliers_;
    std::vector<std::shared_ptr<IGuard>> guards_;
    std::vector<std::shared_ptr<IMonitor>> monitors_;
    std::shared_ptr<IEventTracingManager> tracingManager_;
    std::shared_ptr<IHealthCountersManager> healthCounters_;
};

}  // namespace Velo::OS::Telemetry
