#include "replay/CountingRateLimiter.h"

#include <algorithm>

namespace Velo::OS::Telemetry::replay {

EventResult CountingRateLimiter::handle(std::unique_ptr<TelemetryEvent> event) {
    if (!isFormatJsonBundle(event->getIntakeFormat())) return RateLimiterGuard::handle(std::move(event));
    identifier_ = event->getStringIdentifier();
    EventResult verdict = RateLimiterGuard::handle(std::move(event));
    uint64_t& refused = refused_[identifier_];
    refused = verdict.hasError() ? refused + 1 : 0;
    return verdict;
}

void CountingRateLimiter::explain(Json::Value& why) const {
    const RateLimitConfig limit = limits_->getRateLimitConfig(identifier_);
    const RateLimitConfig byDefault;
    // The guard ignores a window that alone differs from its own default.
    const bool ignoresWindow = limit.refillCount == byDefault.refillCount && limit.maxEvents == byDefault.maxEvents;
    why["reason"] = "rate_limit.exceeded";
    why["identifier"] = identifier_;
    why["limit"] = Json::Int64{limit.maxEvents};
    why["window_seconds"] = Json::Int64{ignoresWindow ? byDefault.windowSeconds : limit.windowSeconds};
    // A window lets through what its bucket holds before it refuses the first.
    why["count"] = Json::UInt64{static_cast<uint64_t>(limit.maxEvents) + refused_.at(identifier_)};
}

}  // namespace Velo::OS::Telemetry::replay
