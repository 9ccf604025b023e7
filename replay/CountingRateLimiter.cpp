#include "replay/CountingRateLimiter.h"

#include <algorithm>

namespace Velo::OS::Telemetry::replay {

EventResult CountingRateLimiter::handle(std::unique_ptr<TelemetryEvent> event) {
    if (!isFormatJsonBundle(event->getIntakeFormat())) return RateLimiterGuard::handle(std::move(event));
    identifier_ = event->getStringIdentifier();
    EventResult verdict = RateLimiterGuard::handle(std::move(event));
    Counts& counts = counts_[identifier_];
    if (verdict.hasError()) {
        ++counts.refused;
    } else {
        counts = {counts.refused > 0 ? 1 : counts.passed + 1, 0};
    }
    return verdict;
}

void CountingRateLimiter::explain(Json::Value& why) const {
    RateLimitConfig limit = limits_->getRateLimitConfig(identifier_);
    const RateLimitConfig byDefault;
    // As the guard has it: a window that alone differs from the default is ignored, and one without refill never ends.
    if (limit.refillCount == byDefault.refillCount && limit.maxEvents == byDefault.maxEvents) limit = byDefault;
    const uint64_t windowMs = static_cast<uint64_t>(limit.windowSeconds) * 1000;
    const bool ends = limit.refillCount >= 1 && limit.maxEvents >= 1;
    const Counts& counts = counts_.at(identifier_);
    why["reason"] = "rate_limit.exceeded";
    why["identifier"] = identifier_;
    why["limit"] = Json::Int64{limit.maxEvents};
    why["window_ms"] = ends ? Json::Value(static_cast<Json::Int64>(windowMs)) : Json::Value();
    // Windows without a refusal may have come before, but none lets through more than the limit.
    why["count"] = Json::UInt64{std::min(counts.passed, static_cast<uint64_t>(limit.maxEvents)) + counts.refused};
}

}  // namespace Velo::OS::Telemetry::replay
