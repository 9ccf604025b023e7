#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <cstdlib>
#include <latch>
#include <set>
#include <thread>

#include "benchmarks/soak/MixedEvents.h"
#include "telemetry/EventCacheState.h"
#include "telemetry/JsonToBundle.h"
#include "telemetry/MonitorEventCache.h"
#include "telemetry/OSUtilsDeviceIdApplier.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

constexpr size_t kThreads = 8, kNames = 100, kDefaultEvents = 8'000;

/// What is computed at its first use and kept, as far as events do not do so.
void useFirst() {
    Json::Value json;
    EXPECT_TRUE(getJsonFromString("[1]", json));
    EXPECT_EQ(OSUtilsDeviceIdApplier::getDeviceModelExtended(), "Unknown");
    EXPECT_EQ(EventSchemaHandler::getEventCategoryEnum("ESSENTIAL"), IEventSchemaHandler::EventCategory::Essential);
    EventCacheState();
}

TEST(Threads, EveryCountReportAndNumberAddsUp) {
    const char* const wanted = std::getenv("TELEMETRY_STRESS_EVENTS");
    const size_t turns = (wanted ? std::strtoull(wanted, nullptr, 10) : kDefaultEvents) / kKinds,
                 events = turns * kKinds;
    const MixedPipeline pipeline(kNames);

    std::barrier start(kThreads + 1);
    std::atomic<size_t> next = 0;
    std::map<std::string, std::set<uint64_t>> numbers;  // by name; the global ones by none
    std::mutex mutex;                                   // guards them
    const auto process = [&] {
        start.arrive_and_wait();
        useFirst();
        for (size_t i = next++; i < events; i = next++) {
            EventResult result = pipeline.processor->processEvent(mixedEvent(i, kNames));
            if (result.hasError()) continue;
            const auto kept = result.takeValue();
            EXPECT_FALSE(kept->getJsonString().empty() || kept->getJsonBatchHeaderString().empty());
            const Json::Value data = kept->getJsonValue();
            const std::lock_guard<std::mutex> lock(mutex);
            EXPECT_TRUE(numbers[""].insert(data["global_sequence_number"].asUInt64()).second);
            EXPECT_TRUE(numbers[kept->name()].insert(data["per_type_sequence_number"].asUInt64()).second);
        }
    };
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kThreads; ++i) threads.emplace_back(process);
    start.arrive_and_wait();
    for (bool decision = false; next < events; decision = !decision) {
        pipeline.services.schema->persistEventSchema(pipeline.schema);
        pipeline.services.schema->overrideEventCategory("nobody", IEventSchemaHandler::EventCategory::Essential);
        EXPECT_FALSE(MonitorEventCache::checkAndSetFilterDecisionCache(/*uid*/ 1, "limited", decision));
    }
    for (std::thread& thread : threads) thread.join();

    const size_t passed = std::min<size_t>(turns, Ledger::kLimit), kept = 3 * turns + passed;
    for (const auto& [name, of] : numbers) EXPECT_EQ(*of.rbegin() - *of.begin() + 1, of.size()) << name << " has gaps";
    EXPECT_EQ(numbers[""].size(), kept);
    Counts expected = {{"processor_account_checkpoint_guard", 7 * turns},
                       {"processor_event_filter_guard", 6 * turns},
                       {"processor_rate_limiter_guard", 5 * turns},
                       {"processor_dynamic_telemetry_guard", kept + turns},
                       {"guard_rate_limit_dropped", turns - passed}};
    const std::pair<uint64_t, std::vector<std::string>> alike[] = {
        {events,
         {"processor_intake_monitor", "processor_size_limiter_monitor", "processor_statsd_verification_monitor",
          "processor_telemetry_state_guard", "processor_pathway_guard"}},
        {turns,
         {"guard_pathway_dropped", "guard_account_checkpointed_dropped", "guard_filter_dropped",
          "guard_dynamic_telemetry_dropped"}},
        {kept,
         {"processor_device_info_applier", "processor_identity_applier", "processor_application_info_applier",
          "processor_seq_num_applier", "processor_sessions_applier", "processor_timestamp_applier"}}};
    for (const auto& [count, counters] : alike) {
        for (const std::string& counter : counters) expected[counter] = count;
    }
    EXPECT_EQ(pipeline.ledger->counters, expected);
    // One for each change from thread to thread.
    pipeline.ledger->reports.erase("arvo_telemetry_checkpoint_status_monitor");
    EXPECT_EQ(pipeline.ledger->reports, (Counts{{"telemetry_event_intake_monitor_audit", kNames + 7},
                                                {"telemetry_event_filtering_audit", kNames + 5},
                                                {"telemetry_service_event_rate_limit_breach", 1},
                                                {"event_size_limit_breach", (turns + 1023) / 1024},
                                                {"arvo_mobile_telemetry_statsd_verification_monitor", turns}}));
}

/// Processes events of every kind, and texts, from its destructor too.
struct Service {
    ~Service() { process(); }
    void process() const {
        for (size_t i = 0; i < 2000; ++i) {
            auto event = mixedEvent(i, 10 * kNames);
            event->addString("text", std::to_string(i));
            EventResult result = pipeline.processor->processEvent(std::move(event));
            if (result.hasValue()) result.takeValue()->getDebugString();
        }
    }
    const MixedPipeline pipeline{kNames};
};

void exitWithStatic() {
    static const Service service;  // older than the tables
    service.process();
    std::exit(0);
}

void exitOnThread() {
    std::thread([] {
        thread_local const Service service;
        service.process();
        std::exit(0);
    }).join();
}

void exitAmongThreads() {
    const auto& service = *new Service;
    static std::atomic<size_t> processed = 0;
    std::atexit([] {  // when younger statics are gone
        for (const size_t before = processed; processed < before + 8;) std::this_thread::yield();
    });
    std::latch started(4);
    const auto processForever = [&] {
        for (service.process(), started.count_down(); true; ++processed) service.process();
    };
    for (int i = 0; i < 4; ++i) std::thread(processForever).detach();
    started.wait();
    std::exit(0);
}

TEST(Threads, ProcessesEndInOrderWhileEventsAreProcessed) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto end : {exitWithStatic, exitOnThread, exitAmongThreads})
        EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
