#pragma once

#include <memory>
#include <mutex>

#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"
#include "telemetry/IRateLimiterConfigManager.h"

namespace Velo::OS::Telemetry {

/// "rate_limiter_guard": limits how many events of each string identifier pass in a window of time, by a token bucket.
/// Atoms are not limited.
///
/// When the first event beyond the limit is refused, it is reported as "telemetry_service_event_rate_limit_breach" with
/// the number of events seen; so is a window that saw more than twice its limit, by the first event after it. Time is
/// that of `std::chrono::steady_clock`; a window begins at the first event after the last one ended.
///
/// The buckets belong to the process and live until it ends, one for each identifier ever seen; guards share them, on
/// any threads. The manager is asked once for each; twice if two guards see the first event at once. A guard holds a
/// lock of its own while it calls a manager or the callback, which must not call back into it.
class TELEMETRY_EXPORT RateLimiterGuard : public IGuard {
public:
    /// Neither manager may be null. Deliberate: their order is not that of the other guards.
    RateLimiterGuard(MonitorEventCallback callback, std::shared_ptr<IHealthCountersManager> healthCounters,
                     std::shared_ptr<IRateLimiterConfigManager> configManager);

    EventResult handle(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<IHealthCountersManager> healthCounters_;
    std::shared_ptr<IRateLimiterConfigManager> configManager_;
    std::mutex mutex_;
};

}  // namespace Velo::OS::Telemetry
