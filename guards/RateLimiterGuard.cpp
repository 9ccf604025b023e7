#include "telemetry/RateLimiterGuard.h"

#include <android/log.h>

#include <chrono>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "conversion/Immortal.h"
#include "guards/Rejection.h"
#include "monitors/MonitorEvent.h"
#include "telemetry/HealthCounterNames.h"
#include "telemetry/LockAnnotations.h"

namespace Velo::OS::Telemetry {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kBreachEventName[] = "telemetry_service_event_rate_limit_breach";
const std::string& kDropCounter = immortal<std::string>(kGuardRateLimitDropped);

// Configured values may be any; what overflows wraps around.

int64_t wrappingProduct(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}

int64_t wrappingSum(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

void reportBreach(const TelemetryEvent& event, const std::string& identifier, double rate,
                  const MonitorEventCallback& callback) {
    const std::string name = event.name();
    MonitorEvent breach;
    breach.putString("event", name);
    if (identifier != name) breach.putString("event_identifier", identifier);
    breach.putDouble("rate", rate);
    breach.putBoolean("caller", false);  // Deliberate: reserved and never set.
    breach.send(kBreachEventName, event.uid(), callback);
}

std::mutex& recordsLock = immortal<std::mutex>();  // guards share the records; taken after a guard's own lock

/// What became of an event, and what is to be said about it.
struct Verdict {
    bool isAccepted;
    uint32_t reportedCount;  // of the window before, if that is to be reported; else 0
    uint32_t count;          // in this window, with the event
    uint32_t max;
    uint32_t windowSeconds;
};

/// What is known of one identifier.
struct Record {
    void configure(const RateLimitConfig& config) TELEMETRY_REQUIRES(recordsLock) {
        if (configured) return;  // by another guard
        // Deliberate: reports and thresholds go by the lower 32 bits.
        loggedMaxEvents = static_cast<uint32_t>(config.maxEvents);
        loggedWindowSeconds = static_cast<uint32_t>(config.windowSeconds);
        // Deliberate: windows are not compared, so where nothing but the window is configured, it is logged and has no
        // effect.
        if (config.refillCount != refillCount || config.maxEvents != capacity) {
            const std::lock_guard<std::mutex> lock(bucketLock);
            refillCount = config.refillCount;
            capacity = config.maxEvents;
            windowMs = wrappingProduct(config.windowSeconds, 1000);
            tokens = config.maxEvents;
            unlimited = config.refillCount < 0 || config.maxEvents < 0;
        }
        configured = true;
    }

    Verdict admit() TELEMETRY_REQUIRES(recordsLock) {
        const uint32_t reportedCount = rollOver();
        ++eventCount;
        return {takeToken(), reportedCount, eventCount, loggedMaxEvents, loggedWindowSeconds};
    }

    /// Begins a new window if the last one is over. Returns how many events that one saw, if they were so many that it
    /// is to be reported; else 0.
    uint32_t rollOver() TELEMETRY_REQUIRES(recordsLock) {
        // Deliberate: without refill or capacity a window never ends, and its count grows until it wraps.
        if (refillCount < 1 || capacity < 1) return 0;
        const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastRefill);
        if (elapsed.count() < windowMs) return 0;

        refill();
        const uint32_t seen = std::exchange(eventCount, 0);
        return seen > 2 * loggedMaxEvents ? seen : 0;
    }

    void refill() TELEMETRY_REQUIRES(recordsLock) {
        const std::lock_guard<std::mutex> lock(bucketLock);
        const Clock::time_point now = Clock::now();
        const std::chrono::nanoseconds elapsed = now - lastRefill;
        // Deliberate: nanoseconds are divided by milliseconds, so a bucket that is not far larger than its refill is
        // filled up. The quotient exists: a window is a multiple of 8 ms even if its product has wrapped, so never -1.
        const int64_t added = windowMs == 0 ? 0 : wrappingProduct(refillCount, elapsed.count()) / windowMs;
        const int64_t sum = wrappingSum(tokens, added);
        tokens = 1 <= sum && sum < capacity ? sum : capacity;
        lastRefill = now;
    }

    bool takeToken() {
        const std::lock_guard<std::mutex> lock(bucketLock);
        if (unlimited) return true;
        if (tokens < 1) return false;
        --tokens;
        return true;
    }

    std::mutex bucketLock;  // also held where the six members that follow change; taken after the records' lock
    int64_t refillCount TELEMETRY_GUARDED_BY(recordsLock) = 9000;
    int64_t capacity TELEMETRY_GUARDED_BY(recordsLock) = 9000;
    int64_t windowMs TELEMETRY_GUARDED_BY(recordsLock) = 60000;
    int64_t tokens TELEMETRY_GUARDED_BY(bucketLock) = 9000;
    bool unlimited TELEMETRY_GUARDED_BY(bucketLock) = false;
    Clock::time_point lastRefill TELEMETRY_GUARDED_BY(recordsLock) = Clock::now();

    uint32_t eventCount TELEMETRY_GUARDED_BY(recordsLock) = 0;  // in this window, dropped ones included
    uint32_t loggedMaxEvents TELEMETRY_GUARDED_BY(recordsLock) = 9000;
    uint32_t loggedWindowSeconds TELEMETRY_GUARDED_BY(recordsLock) = 60;
    bool configured TELEMETRY_GUARDED_BY(recordsLock) = false;
};

using Records = std::unordered_map<std::string, Record>;
Records& records TELEMETRY_GUARDED_BY(recordsLock) = immortal<Records>();

Verdict admit(const std::string& identifier, IRateLimiterConfigManager& configManager) {
    {
        const std::lock_guard<std::mutex> lock(recordsLock);
        Record& record = records[identifier];
        if (record.configured) return record.admit();
    }
    const RateLimitConfig config = configManager.getRateLimitConfig(identifier);  // not locked: others go on
    const std::lock_guard<std::mutex> lock(recordsLock);
    Record& record = records[identifier];
    record.configure(config);
    return record.admit();
}

}  // namespace

RateLimiterGuard::RateLimiterGuard(MonitorEventCallback callback,
                                   std::shared_ptr<IHealthCountersManager> healthCounters,
                                   std::shared_ptr<IRateLimiterConfigManager> configManager)
    : IGuard("rate_limiter_guard", std::move(callback)),
      healthCounters_(std::move(healthCounters)),
      configManager_(std::move(configManager)) {}

EventResult RateLimiterGuard::handle(std::unique_ptr<TelemetryEvent> event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!isFormatJsonBundle(event->getIntakeFormat())) return event;

    const std::string identifier = event->getStringIdentifier();
    const Verdict verdict = admit(identifier, *configManager_);
    double rate = verdict.reportedCount;
    if (!verdict.isAccepted && verdict.count == verdict.max + 1) {
        rate = verdict.count;
        __android_log_print(ANDROID_LOG_DEBUG, "TelemetryService",
                            "Event rate (events per %u second) exceeds max, rejecting, event: %s, rate: %f , max: %u",
                            verdict.windowSeconds, identifier.c_str(), rate, verdict.max);
    }
    if (rate > 0) reportBreach(*event, identifier, rate, callback_);

    if (verdict.isAccepted) return event;
    return reject(*event, kDropCounter, *healthCounters_);
}

}  // namespace Velo::OS::Telemetry
