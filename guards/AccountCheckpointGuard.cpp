#include "telemetry/AccountCheckpointGuard.h"

#include <atomic>
#include <utility>

#include "conversion/Immortal.h"
#include "guards/Rejection.h"
#include "monitors/MonitorEvent.h"
#include "telemetry/HealthCounterNames.h"

namespace Velo::OS::Telemetry {

namespace {

constexpr char kStatusEventName[] = "arvo_telemetry_checkpoint_status_monitor";
const std::string& kDropCounter = immortal<std::string>(kGuardAccountCheckpointedDropped);

}  // namespace

AccountCheckpointGuard::AccountCheckpointGuard(MonitorEventCallback callback,
                                               std::shared_ptr<IAccountCheckpointManager> checkpointManager,
                                               std::shared_ptr<IHealthCountersManager> healthCounters)
    : IGuard("account_checkpoint_guard", std::move(callback)),
      checkpointManager_(std::move(checkpointManager)),
      healthCounters_(std::move(healthCounters)) {}

EventResult AccountCheckpointGuard::handle(std::unique_ptr<TelemetryEvent> event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (event->name() == kStatusEventName) return event;

    const uint32_t uid = event->uid();
    const bool checkpointed = checkpointManager_->isAccountCheckpointed(uid);
    // Deliberate: one state for all users, so users whose events alternate are reported at every change between them.
    static std::atomic<bool> lastCheckpointState = checkpointed;
    if (checkpointed != lastCheckpointState) {
        MonitorEvent status;
        status.putBoolean("is_checkpointed", checkpointed);
        status.send(kStatusEventName, uid, callback_);
        lastCheckpointState = checkpointed;  // a report that failed is tried again with the next event
    }

    if (checkpointed) return reject(*event, kDropCounter, *healthCounters_);
    return event;
}

}  // namespace Velo::OS::Telemetry
