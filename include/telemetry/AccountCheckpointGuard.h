#pragma once

#include <memory>
#include <mutex>

#include "telemetry/IAccountCheckpointManager.h"
#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"

namespace Velo::OS::Telemetry {

/// "account_checkpoint_guard": drops the events of accounts that are held by a check, and reports each change from held
/// to not held and back as "arvo_telemetry_checkpoint_status_monitor". Those reports themselves always pass.
///
/// What was last seen is one value for the whole process, which guards share, on any threads. A guard holds a lock of
/// its own while it calls a manager or the callback, which must not call back into it.
class TELEMETRY_EXPORT AccountCheckpointGuard : public IGuard {
public:
    /// Neither manager may be null.
    AccountCheckpointGuard(MonitorEventCallback callback, std::shared_ptr<IAccountCheckpointManager> checkpointManager,
                           std::shared_ptr<IHealthCountersManager> healthCounters);

    EventResult handle(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<IAccountCheckpointManager> checkpointManager_;
    std::shared_ptr<IHealthCountersManager> healthCounters_;
    std::mutex mutex_;
};

}  // namespace Velo::OS::Telemetry
