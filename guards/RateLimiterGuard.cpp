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

}  // namespace

/// What is known of one identifier.
struct RateLimiterGuard::Record {
    void configure(const RateLimitConfig& config) {
        if (configured) return;
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

    /// Begins a new window if the last one is over. Returns how many events that one saw, if they were so many that it
    /// is to be reported; else 0.
    uint32_t rollOver() {
        // Deliberate: without refill or capacity a window never ends, and its count grows until it wraps.
        if (refillCount < 1 || capacity < 1) return 0;
        const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastRefill);
        if (elapsed.count() < windowMs) return 0;

        refill();
        const uint32_t seen = std::exchange(eventCount, 0);
        return seen > 2 * loggedMaxEvents ? seen : 0;
    }

    void refill() {
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

    std::mutex bucketLock;  // guards the six members that follow, where they change
    int64_t refillCount = 9000;
    int64_t capacity = 9000;
    int64_t windowMs = 60000;
    int64_t tokens = 9000;
    bool unlimited = false;
    Clock::time_point lastRefill = Clock::now();

    uint32_t eventCount = 0;  // in this window, dropped ones included
    uint32_t loggedMaxEvents = 9000;
    uint32_t loggedWindowSeconds = 60;
    bool configured = false;
};

RateLimiterGuard::RateLimiterGuard(MonitorEventCallback callback,
                                   std::shared_ptr<IHealthCountersManager> healthCounters,
                                   std::shared_ptr<IRateLimiterConfigManager> configManager)
    : IGuard("rate_limiter_guard", std::move(callback)),
      healthCounters_(std::move(healthCounters)),
      configManager_(std::move(configManager)) {}

EventResult RateLimiterGuard::handle(std::unique_ptr<TelemetryEvent> event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!isFormatJsonBundle(event->getIntakeFormat())) return event;

    static auto& records = immortal<std::unordered_map<std::string, Record>>();
    static auto& recordsMutex = immortal<std::mutex>();  // other guards have locks of their own
    const std::string identifier = event->getStringIdentifier();
    std::unique_lock<std::mutex> recordsLock(recordsMutex);
    Record& record = records[identifier];
    if (!record.configured) {
        recordsLock.unlock();  // what is called may process events with another guard
        const RateLimitConfig config = configManager_->getRateLimitConfig(identifier);
        recordsLock.lock();
        record.configure(config);
    }

    double rate = record.rollOver();
    const uint32_t count = ++record.eventCount;
    const bool accepted = record.takeToken();
    const uint32_t max = record.loggedMaxEvents;
    const uint32_t window = record.loggedWindowSeconds;
    recordsLock.unlock();

    if (!accepted && count == max + 1) {
        rate = count;
        __android_log_print(ANDROID_LOG_DEBUG, "TelemetryService",
                            "Event rate (events per %u second) exceeds max, rejecting, event: %s, rate: %f , max: %u",
                            window, identifier.c_str(), rate, max);
    }
    if (rate > 0) reportBreach(*event, identifier, rate, callback_);

    if (accepted) return event;
    return reject(*event, kDropCounter, *healthCounters_);
}

}  // namespace Velo::OS::Telemetry
