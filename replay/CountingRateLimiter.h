#pragma once

#include <json/value.h>

#include <string>
#include <unordered_map>
#include <utility>

#include "telemetry/RateLimiterGuard.h"

namespace Velo::OS::Telemetry::replay {

/// The rate limiter, which keeps its counts to itself, with counts of its own. For one thread at a time.
class CountingRateLimiter : public RateLimiterGuard {
public:
    CountingRateLimiter(MonitorEventCallback callback, std::shared_ptr<IHealthCountersManager> healthCounters,
                        const std::shared_ptr<IRateLimiterConfigManager>& limits)
        : RateLimiterGuard(std::move(callback), std::move(healthCounters), limits), limits_(limits) {}

    EventResult handle(std::unique_ptr<TelemetryEvent> event) override;

    /// Adds why the last event was refused: "reason", "identifier", "limit", "window_ms" (null if it never ends) and
    /// "count", how many events the window has seen, this one included.
    void explain(Json::Value& why) const;

private:
    /// Events let through, and then refused: the next one let through begins a new window.
    struct Counts {
        uint64_t passed = 0, refused = 0;
    };

    std::shared_ptr<IRateLimiterConfigManager> limits_;
    std::unordered_map<std::string, Counts> counts_;  // by identifier
    std::string identifier_;                          // of the last event that is not an atom
};

}  // namespace Velo::OS::Telemetry::replay
