#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>
#include <tuple>

#include "monitors/CityHash64.h"
#include "telemetry/IntakeMonitor.h"
#include "telemetry/MonitorEventCache.h"
#include "telemetry/SizeLimiterMonitor.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/VerificationMonitor.h"
#include "tests/fakes/FakeClock.h"
#include "tests/fakes/FakeGuardServices.h"
#include "tests/fakes/FakeTelemetrySettings.h"
#include "tests/fakes/LogCapture.h"
#include "tests/fakes/SmallStack.h"

namespace Velo::OS::Telemetry {

using Lines = std::vector<std::string>;
constexpr char kGate[] = "arvo_mobile_telemetry_intake_monitor";

class Monitors : public testing::Test {
protected:
    Monitors() { fakes::clocksNs = {{fakes::kMonotonic, 4'000'000'000}, {fakes::kBoot, 9'000'000'000}}; }
    ~Monitors() override { fakes::clocksNs.clear(); }

    /// What is reported about the event, which comes back as it is.
    Lines reports(IMonitor& monitor, std::unique_ptr<TelemetryEvent> event) {
        const TelemetryEvent* given = event.get();
        event = monitor.monitor(std::move(event));
        EXPECT_EQ(event.get(), given);
        return services.take();
    }
    static std::unique_ptr<TelemetryEvent> jsonEvent(const std::string& name, uint32_t uid, IntakeFormat format,
                                                     const std::string& data = "{}") {
        return std::make_unique<TelemetryEventBundle>(name, fakes::parsed(data), uid, format);
    }

    std::shared_ptr<fakes::FakeTelemetrySettings> settings = fakes::FakeTelemetrySettings::install();
    fakes::FakeGuardServices services;
};

TEST_F(Monitors, IntakeIsReportedOncePerUserNameAndKind) {
    settings->openGate = kGate;
    IntakeMonitor monitor(services.callback());
    EXPECT_EQ(monitor.name_, "intake_monitor");
    const char* audit = "telemetry_event_intake_monitor_audit";
    const auto reported = [&](uint32_t uid, const std::string& format, const std::string& lowLatency = "false") {
        return Lines{fakes::report(uid, audit,
                                   R"("event_name":"a","intake_format":")" + format + R"(","low_latency":)" +
                                       lowLatency +
                                       R"(,"processing_pipeline":"JSON Bundle","utl_logging_package":"p")")};
    };
    const std::tuple<uint32_t, IntakeFormat, Lines> cases[] = {
        {10, IntakeFormat::OsNdk, reported(10, "OSNDK")},
        {10, IntakeFormat::JsonBundle, {}},
        {10, IntakeFormat::HalAtom, reported(10, "HAL Atom")},
        {10, IntakeFormat::SpecificAtom, {}},
        {11, IntakeFormat::SpecificAtom, reported(11, "Specific Atom")},
    };
    for (const auto& [uid, format, report] : cases) {
        EXPECT_EQ(reports(monitor, jsonEvent("a", uid, format, R"({"utl_logging_package":"p"})")), report) << uid;
        settings = fakes::FakeTelemetrySettings::install();  // the gate was read once and for all
    }
    const auto urgent = [] {
        return std::make_unique<TelemetryEventBundle>("a", 12U, true,
                                                      fakes::bundleOf(R"({"utl_logging_package":"p"})"));
    };
    services.reportsFail = true;
    EXPECT_THROW(monitor.monitor(urgent()), std::runtime_error);
    services.reportsFail = false;
    services.take();
    IntakeMonitor other(services.callback());
    EXPECT_EQ(reports(other, urgent()), reported(12, "JSON Bundle", "true")) << "as the first report was lost";
    EXPECT_EQ(reports(monitor, urgent()), Lines{});
    EXPECT_EQ(reports(monitor, jsonEvent(audit, 10, IntakeFormat::JsonBundle)), Lines{});
    EXPECT_THROW(IntakeMonitor(nullptr).monitor(jsonEvent("b", 10, IntakeFormat::JsonBundle)), std::bad_function_call);
}

TEST_F(Monitors, NoIntakeIsReportedWhenTheGateWasClosedAtFirst) {
    struct Derived : IntakeMonitor {
        using IntakeMonitor::IntakeMonitor;
        bool isGkEnabled() override { return true; }
    } derived(services.callback());
    IntakeMonitor monitor(services.callback());
    EXPECT_EQ(reports(monitor, jsonEvent("a", 10, IntakeFormat::JsonBundle)), Lines{});
    settings->openGate = kGate;
    EXPECT_EQ(reports(monitor, jsonEvent("a", 10, IntakeFormat::JsonBundle)), Lines{});
    EXPECT_EQ(reports(derived, jsonEvent("a", 10, IntakeFormat::JsonBundle)).size(), 1U);
}

TEST_F(Monitors, ThreadsReportIntakeOnce) {
    fakes::clocksNs.clear();
    settings->openGate = kGate;
    const auto event = [](uint32_t uid, int number) {
        return jsonEvent(std::to_string(number), uid, IntakeFormat::JsonBundle, R"({"utl_logging_package":"p"})");
    };
    const auto slowly = [callback = services.callback()](const auto&... report) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        callback(report...);
    };
    IntakeMonitor monitors[] = {IntakeMonitor(slowly), IntakeMonitor(slowly)};
    std::vector<std::thread> threads;
    for (uint32_t uid : {1U, 2U, 1U, 2U}) {  // of two monitors at once, yet no user of both
        threads.emplace_back([&, uid] {
            for (int i = 0; i < 20; ++i) monitors[uid - 1].monitor(event(uid, i));
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(services.take().size(), 40U);

    // While one reports, others go on.
    std::future<void> other;
    IntakeMonitor reporting([&](const auto&...) {
        other = std::async(std::launch::async, [&] { monitors[0].monitor(event(3, 1)); });
        EXPECT_EQ(other.wait_for(std::chrono::seconds(5)), std::future_status::ready);
    });
    reporting.monitor(event(3, 2));
}

TEST_F(Monitors, OversizedEventsAreReportedEveryTime) {
    SizeLimiterMonitor monitor(services.callback());
    EXPECT_EQ(monitor.name_, "size_limiter_monitor");
    const auto ofSize = [](size_t size) {
        auto event = jsonEvent("big", 10123, IntakeFormat::JsonBundle);
        for (size_t i = 1; i < size; ++i) event->addInt(std::to_string(i), 0);
        EXPECT_EQ(event->size(), size);
        return event;
    };
    fakes::LogCapture log;
    EXPECT_EQ(reports(monitor, ofSize(2560)), Lines{});
    EXPECT_EQ(log.take(), Lines{});
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(reports(monitor, ofSize(2561)),
                  Lines{fakes::report(10123, "event_size_limit_breach", R"("event":"big","size":2561)")});
        EXPECT_EQ(log.take(), Lines{"5 TelemetryService: Event exceeds max size, rejecting, event: big, size: 2561, "
                                    "max: 2560"});
    }
}

TEST_F(Monitors, AnEventOfAnotherClassIsAskedForItsData) {
    struct Answering : TelemetryEventBundle {
        using TelemetryEventBundle::TelemetryEventBundle;
        Json::Value getJsonValue() override {
            return uid() == 7 ? fakes::parsed(R"({"a":1,"b":2,"c":3})") : fakes::nested(100'000);
        }
    };
    settings->inVerification = true;
    VerificationMonitor monitor(services.callback());
    const Lines answered = reports(monitor, std::make_unique<Answering>("e", 7U, false));
    EXPECT_NE(answered.at(0).find(R"("fields_number":3)"), std::string::npos) << answered.at(0);
    fakes::onSmallStack([&] {
        const Lines refused = reports(monitor, std::make_unique<Answering>("e", 8U, false));
        EXPECT_NE(refused.at(0).find(R"("fields_number":0)"), std::string::npos) << refused.at(0);
    });
}

TEST_F(Monitors, VerifiedEventsAreFingerprinted) {
    struct Derived : VerificationMonitor {
        using VerificationMonitor::VerificationMonitor;
        bool isEventInVerification(const std::string& name) override {
            return name == "own" || VerificationMonitor::isEventInVerification(name);
        }
        bool isVerboseEnabled() override { return ++asked, VerificationMonitor::isVerboseEnabled(); }
        int asked = 0;
    } monitor(services.callback());
    EXPECT_EQ(monitor.name_, "statsd_verification_monitor");
    EXPECT_EQ(reports(monitor, jsonEvent("e", 7, IntakeFormat::JsonBundle)), Lines{});
    EXPECT_EQ(settings->takeCalls(), Lines{"isEventInVerification e 0"});
    EXPECT_EQ(reports(monitor, jsonEvent("own", 7, IntakeFormat::JsonBundle)).size(), 1U);
    settings = fakes::FakeTelemetrySettings::install();
    settings->inVerification = true;

    struct Case {
        const char *data, *text, *textWithoutTimestamp;
        const char *created, *createdLow, *count;
    };
    const Case cases[] = {
        {R"({"a":1,"b":"x"})", R"("a":1;"b":"x";)", R"("a":1;"b":"x";)", "0", "0", "2"},
        {R"({"z":[],"y":[{"q":1},null],"x":null,"n":{"o":{"z":2,"k":1.5},"k":true,"Z":"\"\u00e9"},"realtime":9,"utl_realtime_ms":4294967297})",
         R"("Z":"\"\u00e9";"k":true;"utl_realtime_ms":4294967297;"x":null;"y":[{"q":1},null];"z":2;)",
         R"("Z":"\"\u00e9";"k":true;"x":null;"y":[{"q":1},null];"z":2;)", "4294967297", "1", "5"},
        {R"({"utl_uptime_ms":3,"utl_logging_package":"p","utl_realtime_ms":-1,"é":1e30,"e":{}, "":[]})",
         R"("":[];"\u00e9":1e+30;"utl_logging_package":"p";"utl_realtime_ms":-1;"utl_uptime_ms":3;)",
         R"("":[];"\u00e9":1e+30;)", "-1", "-1", "2"},
    };
    const auto lowerHalf = [](const char* text) {
        return std::to_string(static_cast<int32_t>(static_cast<uint32_t>(cityHash64(text))));
    };
    EXPECT_EQ(lowerHalf(cases[0].text), "-190359424");
    for (const Case& c : cases) {
        EXPECT_EQ(monitor.sortEventFields(fakes::parsed(c.data), {"\"realtime\"", "\"utl_realtime_ms\"",
                                                                  "\"utl_uptime_ms\"", "\"utl_logging_package\""}),
                  std::make_pair(std::string(c.textWithoutTimestamp), static_cast<uint32_t>(std::stoi(c.count))));
        EXPECT_EQ(reports(monitor, jsonEvent("e", 7, IntakeFormat::AndroidAtom, c.data)),
                  Lines{fakes::report(7, "arvo_mobile_telemetry_statsd_verification_monitor",
                                      std::string(R"("event_identifier":"e_)") + c.created +
                                          R"(","event_name":"e","fields_number":)" + c.count + R"(,"hash_value":)" +
                                          lowerHalf(c.text) + R"(,"hash_value_without_timestamp":)" +
                                          lowerHalf(c.textWithoutTimestamp) + R"(,"original_utl_realtime_ms":)" +
                                          c.createdLow + R"(,"pathway":"Android Atom")") +
                        " int fields_number int hash_value int hash_value_without_timestamp int "
                        "original_utl_realtime_ms"});
    }
    EXPECT_EQ(monitor.asked, 4);
    EXPECT_FALSE(monitor.isVerboseEnabled());
    settings->verbose = true;
    EXPECT_TRUE(monitor.isVerboseEnabled());
    services.reportsFail = true;
    EXPECT_THROW(monitor.monitor(jsonEvent("e", 7, IntakeFormat::JsonBundle)), std::runtime_error);
    EXPECT_EQ(monitor.asked, 6) << "the report comes first";

    std::map<std::string, std::string> fields = {{"\"b\"", "0"}};
    monitor.convertObjectToMap(fakes::parsed(R"({"a":[1],"b":1})"), fields);
    EXPECT_EQ(fields, (std::map<std::string, std::string>{{"\"a\"", "[1]"}, {"\"b\"", "0"}}));
    EXPECT_EQ(monitor.sortEventFields(fakes::parsed("[1]"), {}), std::make_pair(std::string(), 0U));
}

TEST(CityHash64, IsThatOfTheStandardLibrary) {
    uint64_t all = 0;
    for (size_t length = 0; length <= 200; ++length) {
        std::string text;
        for (size_t i = 0; i < length; ++i) text += static_cast<char>(length * 131 + i * i * 29 + i * 71);
        all = 31 * all + cityHash64(text);
    }
    EXPECT_EQ(all, 0x0f85c6b2140b30faU) << "as that library's own hashes add up; CityHash64_libcxx names the length";
    const std::pair<std::string, uint64_t> known[] = {
        {"a", 0x2420662cd003acfa},
        {"abcd", 0x7c9d3ea77898749f},
        {"\xFF\xFF\xFF\xFF", 0xfbd9b98714adaeb5},
        {R"("a":1;"b":"x";)", 0xde13e81bf4a75880},
        {"hello world", 0xabe4036b6bb6a0a5},
        {"The quick brown fox jumps over the lazy dog", 0x26b33ea81c599455},
    };
    for (const auto& [text, hash] : known) EXPECT_EQ(cityHash64(text), hash) << text;
}

TEST(MonitorEventCache, KnowsTheLastDecisionOfEachUserAndEvent) {
    const std::tuple<unsigned int, const char*, bool, bool> steps[] = {
        // uid, event, decision, known
        {10, "e", true, false}, {10, "e", true, true},   {10, "e", false, false}, {10, "e", false, true},
        {11, "e", true, false}, {10, "e", false, true},  {10, "g", false, false}, {10, "e", true, false},
        {11, "e", true, true},  {11, "g", false, false}, {10, "g", false, true},
    };
    for (const auto& [uid, event, decision, isKnown] : steps) {
        EXPECT_EQ(MonitorEventCache::checkAndSetFilterDecisionCache(uid, event, decision), isKnown)
            << uid << event << decision;
    }
}

}  // namespace Velo::OS::Telemetry
