#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <sstream>
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

// Of texts from length 0 on, as hashed by the C++ library whose hash it is. Byte i of the text of length n is
// 131 n + 29 i * i + 71 i.
constexpr char kHashes[] = R"(
9ae16a3b2f90404f 81d38382eb6dfbee 0fa21499cdfce8d9 096f4813dea5baf9 f7618c894e7c7802 5f7a599898f7eeb9 6f42cf9a5a6202be
c8b569946e4629ab 36976873a08504fc fb9876694c4791f1 dbce49ee433a05ce 51b0a09bf1349b8b 37667f4e1f506d35 44cebf6842c92a1c
1b1eacfa83d60fb4 55bbb70ce599ade0 271cd3c1d4c53cd5 0e441353d0eaf4af 81e75758a1e44f11 a03c242979bf75c2 c61bacdbda75317d
65015711eaad7933 2d95093ec9fd75c1 ff6a79477399d79e b97d14f0451505f0 e99e42ae569a1519 d460f80bc994cb3a 555ba6f2955bf6f1
d8e78a326b0ab7ee c57003704ae2e78c a9702a8bf7d84a28 ff619e446b66b01b d4d4dc39a1eef0b1 60bc0f002ab2eadf 4d3033c01e134881
a07d8177947774a4 a78898b6099c8ec6 e73969292518fcbd 64ec24260369c263 fc02a466af192c84 0f4d7ce0e7048724 32776ed68d6cf873
d7569712cf0e68fb 3c952b878b39bbb8 c370b5beb1f53a1a 1352153b27c93152 9762dcdf9c7d98d2 c27f1d5ab9cdcdd9 3c5cc51d3d90c8ae
34d493f7f6c194e4 537e15ad0182477a 34098a1ec454e0c9 387a34f5d3ff39dd b538f608a5a40367 b51b3baff5aaac19 25ccf621563a7755
8939f55bbe55c8a6 086e9232599cd765 f1d719583a70e7dc f9d540a1a05720b2 bfa5de5f9712f717 c3094b9a4a7561c6 f3ee37e994e72ece
2db8894c3a8237c0 ce6589923ed70df9 c178852300f553ca 7fe2f201a84f37da a508582f4949225b 72a68a092ba080c9 9455d89b8dfa50ce
123f8317b5385cfc 42bc27bd5ef851a2 1a67f4c832f402e6 421de81177dbf045 09895206a57a4cd4 5ba3bea36beb2499 f9a2f0d2381f11e2
41a548e13c922982 d2f655b46d7fbedd bb8a77ba9e06e05b 583032954d87b8fe ca7c5a25d47dec1a 8086c4c6aa94d0b2 f93f4f49ad746c99
4f0efbf5d13ecfd8 f30795aedf9a7783 900177a10369dee9 d66a816fcb42ce58 87c550c488b20390 1adf8b4972f26380 8e306ea383fdd675
386d1da027666021 5567cefda1dd03f0 241260b82d61495b b5aadc0d2187130f 0ad377459edcd20f f1314cc29f4aa40c 6c55d244f4f013de
70ca7d68798a9e79 5fc7f0de483f850d a96b02f0247e1d09 e88f530908f106cb e4890c3d40491cb5 b459637462f47c37 fd56a8fbac6fa725
7a24dd276387d179 feedaa6ad12f26d3 bf08aebe15f5f882 9b785246405d2d93 a5abc5416fde0897 300424f4dbad7bf6 4c3656ee0836d60a
514233f99e832350 24dbc87c7fed7d2e 1a2b4323cf48ae3d 8f0724a1d5e4c94d 740048de024eb269 4c3ea5d9e241d740 87831b4f9e55a1e2
c096d8164d57f751 a8a1e84e78302af7 9e9bc3299056400e 2ca32c5ffcbc2429 d686ca0dcd1c27c3 d1bdd7cd68aa101e e15458293a3fdc12
fcb5ab461999adc6 229b1616be9f6638 21645ae24b502178 af0279eca562d3e4 09353caee83c1d5f ab95741accbb157b 49626b8bd0c3e662
da5968d0f6b3e8d3 fed05f3afc0cbf42 7c2f9e9fc52da48c 045c158ac6404009 47adc517ef67539c e4ef5b9903304308 07af6b1c415df5c5
43274be70c00814e 959c1d6578a0a798 cd67c432e6387625 e3f8dbad5c50e1ff e8460fed6801b52e b1afbc3459169113 4a0add36ba1343e4
47158681b24639ac cb83817b21b954a8 71d829f468c55c21 3fe19e39ba61a8a7 80100fafdf193fd7 de8c643f5c860e65 e04c4b19f8800198
4771e2dd0aeb2e0d 338ce09230a2d363 c5e4b3a93c1537c5 6a32364a0001d50c 9b024f2b4638ba13 903457ebebcb2577 dd560f207caf29cb
6fd7752c72577103 f77ac1e1a7446ebe a15ea764a10d412a 6f5684aedf0201eb b6e55d1bfb952785 4ba362fd0aab686f e23fbe5d17e3b6a2
c8142c2c07d058cd 82ead726466ebaf9 f9b0a36c49baefdb 0a5ba6f6f0c90537 0e1e2a77d7e280ff 12dd1599f101b25f f46b923fb1c2d386
2f92fe76cf1cdcc4 686e8e68047ef903 98455d2cdc34f46a 104fb0b26a692d8f 5c57a682d8412617 a9d0309455e46f7e 7054f5293a7ee4a5
f0cd234501aae6f4 4f09a1e0206df074 436386a64cb8b696 6f5e7bae627425b8 5b29278ae298434a 139f28b0e2420710 95b2166da8fbd061
3683926a9997e6e8 2983fbc06eb9fd12 816cb27a79e18cdf 3ee00cd0958ac4c3 f475039c334e6956 810164abd8337212 51808e42cb849597
d93e9a3e9183d7e0 3301fc4419471464 2b77a17f672414f6 99288700a2d3fb98 df5edc850acce361)";

TEST(CityHash64, IsThatOfTheStandardLibrary) {
    std::istringstream hashes(kHashes);
    for (size_t length = 0; length <= 200; ++length) {
        std::string text;
        for (size_t i = 0; i < length; ++i) text += static_cast<char>(length * 131 + i * i * 29 + i * 71);
        uint64_t hash = 0;
        EXPECT_TRUE(hashes >> std::hex >> hash);
        EXPECT_EQ(cityHash64(text), hash) << length;
    }
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
