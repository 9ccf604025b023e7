// Embeds the pipeline: injects what a guard and an applier ask for, and lets three events through.
#include <utils/String8.h>

#include <iostream>
#include <map>
#include <mutex>

#include "telemetry/RateLimiterGuard.h"
#include "telemetry/SequenceNumberApplier.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"

using namespace Velo::OS::Telemetry;

// Events may be processed on several threads at once, so whatever is injected must be thread-safe.
class MemoryCounters : public IHealthCountersManager {
public:
    void incrementCounter(const std::string& counterName, int32_t amount) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        counters_[counterName] += amount;
    }
    void incrementEventCounter(const std::string& counterName, const TelemetryEvent&, int32_t amount) override {
        incrementCounter(counterName, amount);
    }
    void print() {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& [name, count] : counters_) std::cout << name << ": " << count << '\n';
    }

private:
    std::mutex mutex_;
    std::map<std::string, int64_t> counters_;
};

class MemorySequenceNumbers : public SequenceNumberManager {
public:
    uint64_t getNextGlobalSequenceNumber(bool /*priority*/) override { return getNextPerTypeSequenceNumber(""); }
    uint64_t getNextPerTypeSequenceNumber(const std::string& eventName) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        return ++last_[eventName];
    }

private:
    std::mutex mutex_;
    std::map<std::string, uint64_t> last_;  // under "" that of all events
};

struct OneEventPerMinute : IRateLimiterConfigManager {
    RateLimitConfig getRateLimitConfig(const std::string& /*eventIdentifier*/) override { return {1, 1, 60}; }
};

// What guards and monitors report. A service queues it, to log it later as an event of its own.
void report(const android::os::PersistableBundle& monitorEvent, bool /*flag*/, unsigned int uid) {
    for (const android::String16& name : monitorEvent.getPersistableBundleKeys())
        std::cout << android::String8(name).c_str() << " reported of uid " << uid << '\n';
}

void process(const TelemetryEventProcessor& processor, std::unique_ptr<TelemetryEvent> event) {
    const std::string name = event->name();
    EventResult result = processor.processEvent(std::move(event));
    if (result.hasError()) {
        std::cout << name << " dropped: " << result.error().message() << '\n';
        return;
    }
    const std::unique_ptr<TelemetryEvent> kept = result.takeValue();
    std::cout << name << ' ' << kept->getJsonString() << ' ' << kept->getJsonBatchHeaderString() << '\n';
}

int main() {
    const auto counters = std::make_shared<MemoryCounters>();
    auto rateLimiter = std::make_shared<RateLimiterGuard>(report, counters, std::make_shared<OneEventPerMinute>());
    auto numberer = std::make_shared<SequenceNumberApplier>(std::make_shared<MemorySequenceNumbers>());
    const auto processor =
        TelemetryEventProcessorBuilder(nullptr, counters).addGuard(rateLimiter).addApplier(numberer).build();

    Json::Value launch;
    launch["utl_app_id"] = 23;
    process(*processor, std::make_unique<TelemetryEventBundle>("app_launch", launch, 10123U, IntakeFormat::JsonBundle));
    process(*processor, std::make_unique<TelemetryEventBundle>("app_launch", launch, 10123U, IntakeFormat::JsonBundle));

    android::os::PersistableBundle view;
    view.putString(android::String16("title"), android::String16("Home"));
    process(*processor, std::make_unique<TelemetryEventBundle>("screen_view", 10123U, true, view));
    counters->print();
}
