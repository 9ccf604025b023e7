#pragma once

#include <memory>
#include <mutex>

#include "telemetry/IDynamicTelemetryManager.h"
#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"

namespace Velo::OS::Telemetry {

/// "dynamic_telemetry_guard": drops what the manager decides not to log, and marks every other event with
/// "dynamic_telemetry_config_id" and its sample rate.
///
/// Each event, whatever becomes of it, first carries out the records that the manager has gathered about itself; they
/// are reported under uid 1000, because they are not about the application that logged the event.
///
/// The guard holds its lock while it calls a manager or the callback, which must not call back into it.
class TELEMETRY_EXPORT DynamicTelemetryGuard : public IGuard {
public:
    /// Neither manager may be null.
    DynamicTelemetryGuard(MonitorEventCallback callback, std::shared_ptr<IDynamicTelemetryManager> manager,
                          std::shared_ptr<IHealthCountersManager> healthCounters);

    EventResult handle(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<IDynamicTelemetryManager> manager_;
    std::shared_ptr<IHealthCountersManager> healthCounters_;
    std::mutex mutex_;
};

}  // namespace Velo::OS::Telemetry
