#include <android-base/properties.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>
#include <tuple>

#include "telemetry/AccountCheckpointGuard.h"
#include "telemetry/DynamicTelemetryGuard.h"
#include "telemetry/EventFilterGuard.h"
#include "telemetry/MonitorEventCache.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/RateLimiterGuard.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TelemetryStateGuard.h"
#include "tests/fakes/FakeClock.h"
#include "tests/fakes/FakeGuardServices.h"
#include "tests/fakes/FakeTelemetrySettings.h"
#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using Lines = std::vector<std::string>;
using fakes::clocksNs, fakes::kBoot, fakes::kMonotonic, fakes::report;

constexpr int64_t kSecond = 1'000'000'000;  // in ns
constexpr int64_t kMin = std::numeric_limits<int64_t>::min(), kMax = std::numeric_limits<int64_t>::max();

class Guards : public testing::Test {
protected:
    Guards() { clocksNs = {{kMonotonic, 4 * kSecond}, {kBoot, 9 * kSecond}}; }
    ~Guards() override { clocksNs.clear(); }

    /// Whether the guard passes the very event it is given.
    bool passes(IGuard& guard, const std::string& name, uint32_t uid = 1010123,
                IntakeFormat format = IntakeFormat::JsonBundle, const char* data = "{}") {
        auto event = std::make_unique<TelemetryEventBundle>(name, fakes::parsed(data), uid, format);
        const TelemetryEvent* given = event.get();
        EventResult verdict = guard.handle(std::move(event));
        if (verdict.hasError()) {
            EXPECT_EQ(verdict.error(), std::error_code(22, std::generic_category()));
            return false;
        }
        passed = verdict.takeValue();
        EXPECT_EQ(passed.get(), given);
        return true;
    }

    std::shared_ptr<fakes::FakeTelemetrySettings> settings = fakes::FakeTelemetrySettings::install();
    std::shared_ptr<fakes::FakeGuardServices> services = std::make_shared<fakes::FakeGuardServices>();
    std::unique_ptr<TelemetryEvent> passed;
};

TEST_F(Guards, ThePathwayMustBeAJsonBundleWhileAnEventIsVerified) {
    PathwayGuard guard(nullptr, services);
    EXPECT_EQ(guard.name_, "pathway_guard");
    const std::tuple<IntakeFormat, bool, const char*> cases[] = {
        // format, passes if verified, display name
        {IntakeFormat::JsonBundle, true, ""},
        {IntakeFormat::Libtelemetry, true, ""},
        {IntakeFormat::OsNdk, true, ""},
        {IntakeFormat::SpecificAtom, false, "Specific Atom"},
        {IntakeFormat::AndroidAtom, false, "Android Atom"},
    };
    fakes::LogCapture log;
    for (const auto& [format, passesIfVerified, formatName] : cases) {
        for (const bool verified : {false, true}) {
            settings->inVerification = verified;
            const bool drops = verified && !passesIfVerified;
            EXPECT_EQ(passes(guard, "e", 1, format), !drops) << formatName;
            EXPECT_EQ(settings->takeCalls(), Lines{"isEventInVerification e 0"});
            EXPECT_EQ(services->take(), drops ? Lines{"count guard_pathway_dropped 1 of e"} : Lines{});
            EXPECT_EQ(log.take(), drops ? Lines{std::string("3 TelemetryService: PathwayGuard: e event in verification;"
                                                            " dropping ") +
                                                formatName + "."}
                                        : Lines{});
        }
    }
    settings = fakes::FakeTelemetrySettings::install();
    EXPECT_FALSE(passes(guard, "e", 1, IntakeFormat::GenericAtom));
    EXPECT_EQ(services->take(), Lines{"count guard_pathway_dropped 1 of e"});
    EXPECT_EQ(settings->takeCalls(), Lines{}) << "generic atoms are refused whatever the settings";
    EXPECT_EQ(log.take(), Lines{});
    EXPECT_TRUE(passes(guard, "e", 1, IntakeFormat::SpecificAtom)) << "the settings are not those of before";
}

TEST_F(Guards, NothingPassesWhileTelemetryIsDisabled) {
    TelemetryStateGuard guard(nullptr);
    EXPECT_EQ(guard.name_, "telemetry_state_guard");
    EXPECT_TRUE(passes(guard, "e"));
    fakes::FakeTelemetrySettings::install()->enabled = false;
    EXPECT_FALSE(passes(guard, "e"));

    fakes::WithOwnSettings<TelemetryStateGuard> derived(nullptr);
    EXPECT_TRUE(passes(derived, "e"));
    EXPECT_EQ(derived.asked, 1);
}

struct RateCase {
    struct Step {
        int64_t afterNs;
        int events, pass;
        std::vector<double> reportedRates;
    };

    const char* name;
    RateLimitConfig config;
    std::vector<Step> steps;
};

TEST_F(Guards, RatesAreLimitedPerWindow) {
    constexpr int64_t k2to31 = int64_t{1} << 31, k2to60 = int64_t{1} << 60;
    const RateCase cases[] = {
        {"by default",
         {9000, 9000, 60},
         {{0, 9000, 9000, {}}, {0, 2, 0, {9001}}, {60 * kSecond - 1, 1, 0, {}}, {1, 1, 1, {}}}},
        {"more than twice", {3, 3, 10}, {{0, 7, 3, {4}}, {10 * kSecond, 4, 3, {7, 4}}, {11 * kSecond, 1, 1, {}}}},
        {"exactly twice", {3, 3, 10}, {{0, 6, 3, {4}}, {10 * kSecond, 1, 1, {}}}},
        {"a refill alone", {5, 9000, 1}, {{0, 9001, 9000, {9001}}, {kSecond, 1, 1, {}}}},
        {"a capacity alone", {9000, 5, 1}, {{0, 6, 5, {6}}, {kSecond, 1, 1, {}}}},
        {"a window alone", {9000, 9000, 1}, {{0, 9000, 9000, {}}, {kSecond, 1, 0, {9001}}, {59 * kSecond, 1, 1, {}}}},
        {"windows are not aligned", {1, 1, 10}, {{0, 1, 1, {}}, {15 * kSecond, 1, 1, {}}, {9 * kSecond, 1, 0, {2}}}},
        {"negative refill", {-1, 2, 1}, {{0, 9, 9, {}}, {9 * kSecond, 9, 9, {}}}},
        {"negative capacity", {2, -1, 1}, {{0, 9, 9, {}}}},
        {"no refill", {0, 2, 1}, {{0, 3, 2, {3}}, {9 * kSecond, 9, 0, {}}}},
        {"no capacity 100%n", {2, 0, 1}, {{0, 2, 0, {1}}, {9 * kSecond, 9, 0, {}}}},
        {"no window", {5, 3, 0}, {{0, 9, 9, {}}}},
        {"a negative window", {5, 3, -1}, {{0, 9, 9, {}}, {kSecond, 9, 9, {}}}},
        {"a window that wraps to none", {5, 3, 2 * k2to60}, {{0, 9, 9, {}}}},
        {"the largest of 32 bits", {INT32_MAX, INT32_MAX, INT32_MAX}, {{0, 9, 9, {}}}},
        {"a limit beyond 32 bits", {1, 2 * k2to31 + 2, 1}, {{0, 5, 5, {}}, {kSecond, 1, 1, {5}}}},
        {"twice a limit beyond 32 bits", {1, k2to31 + 1, 1}, {{0, 3, 3, {}}, {kSecond, 1, 1, {3}}}},
        // 2^60 times a second in ns is a multiple of 2^64: nothing is added, and the last token is all there is.
        {"a bucket not filled up", {k2to60, 3, 1}, {{0, 2, 2, {}}, {kSecond, 2, 1, {}}, {kSecond, 3, 3, {}}}},
        // This many times a second in ns wraps to -5632: five are taken away, and below one token it is filled up.
        {"a sum below nothing", {29'875'000'089'462'609, 10, 1}, {{0, 7, 7, {}}, {kSecond, 11, 10, {11}}}},
        {"a sum beyond 64 bits", {1, kMax, 1}, {{0, 1, 1, {}}, {kSecond, 2, 2, {}}}},
        {"a window beyond 64 bits", {kMax, 2, kMax}, {{0, 9, 9, {}}, {kSecond, 9, 9, {}}}},
        {"the least of all", {kMin, kMin, kMin}, {{0, 9, 9, {}}}},
        {"the largest of all", {kMax, kMax, kMax}, {{0, 9, 9, {}}, {kMax - 300 * kSecond, 9, 9, {}}}},
    };
    std::vector<double> rates;
    const auto keepRate = [&](android::os::PersistableBundle envelope, bool /*flag*/, unsigned int /*uid*/) {
        Json::Value json;
        EXPECT_TRUE(convertBundleToJson(envelope, json));
        rates.push_back(json["telemetry_service_event_rate_limit_breach"]["rate"].asDouble());
    };
    RateLimiterGuard guard(keepRate, services, services);
    fakes::LogCapture log;
    for (const RateCase& c : cases) {
        services->rateLimit = c.config;
        const auto max = static_cast<uint32_t>(c.config.maxEvents);
        Lines calls = {std::string("limit of ") + c.name};
        for (const RateCase::Step& step : c.steps) {
            clocksNs[kMonotonic] += step.afterNs;
            int pass = 0;
            for (int i = 0; i < step.events; ++i) pass += passes(guard, c.name) ? 1 : 0;
            EXPECT_EQ(pass, step.pass) << c.name;
            EXPECT_EQ(std::exchange(rates, {}), step.reportedRates) << c.name;
            char line[200];
            std::snprintf(line, sizeof(line),
                          "3 TelemetryService: Event rate (events per %u second) exceeds max, rejecting, event: %s, "
                          "rate: %u.000000 , max: %u",
                          static_cast<uint32_t>(c.config.windowSeconds), c.name, max + 1, max);
            const bool isFirstRefused = step.pass < step.events &&
                                        std::count(step.reportedRates.begin(), step.reportedRates.end(), max + 1.0) > 0;
            EXPECT_EQ(log.take(), isFirstRefused ? Lines{line} : Lines{}) << c.name;
            calls.resize(calls.size() + static_cast<size_t>(step.events - step.pass),
                         std::string("count guard_rate_limit_dropped 1 of ") + c.name);
        }
        EXPECT_EQ(services->take(), calls) << c.name;
    }
}

TEST_F(Guards, ARateLimitIsKeptByIdentifierAndItsBreachReportedOnce) {
    const std::string breach = "telemetry_service_event_rate_limit_breach";
    RateLimiterGuard guard(services->callback(), services, services);
    EXPECT_EQ(guard.name_, "rate_limiter_guard");
    services->rateLimit = {1, 0, 5};
    EXPECT_FALSE(passes(guard, "e"));
    EXPECT_FALSE(passes(guard, "ondemand_statsd_utl", 7, IntakeFormat::Libtelemetry, R"({"campaign_id":42})"));
    services->rateLimit = {};
    EXPECT_FALSE(passes(guard, "e"));
    EXPECT_TRUE(passes(guard, "ondemand_statsd_utl", 7, IntakeFormat::OsNdk, R"({"campaign_id":43})"));
    EXPECT_EQ(services->take(),
              (Lines{"limit of e", report(1010123, breach, R"("caller":false,"event":"e","rate":1.0)"),
                     "count guard_rate_limit_dropped 1 of e", "limit of odt_42",
                     report(7, breach,
                            R"("caller":false,"event":"ondemand_statsd_utl","event_identifier":"odt_42","rate":1.0)"),
                     "count guard_rate_limit_dropped 1 of ondemand_statsd_utl", "count guard_rate_limit_dropped 1 of e",
                     "limit of odt_43"}));
    EXPECT_TRUE(passes(guard, "e", 7, IntakeFormat::SpecificAtom)) << "atoms are not limited";
    EXPECT_EQ(services->take(), Lines{});
    RateLimiterGuard other(nullptr, services, services);
    RateLimiterGuard reporting([&](const auto&...) { EXPECT_TRUE(passes(other, "unlimited")); }, services, services);
    services->rateLimit = {-1, -1, 1};
    EXPECT_TRUE(passes(other, "unlimited"));
    services->rateLimit = {1, 0, 5};
    EXPECT_FALSE(passes(reporting, "f")) << "while one reports, others go on";
}

TEST_F(Guards, AnyBytesAreANameAndReportedAsThePlatformHoldsThem) {
    const std::string huge(1 << 20, 'x');
    const std::pair<std::string, std::string> cases[] = {
        // name, as reported
        {"", ""},          {"%s%n", "%s%n"},         {std::string("a\0b", 3), "a"},
        {"a\xE2\x82", ""}, {"a\xC3z", R"(a\u00fa)"}, {huge, huge},
    };
    RateLimiterGuard guard(services->callback(), services, services);
    services->rateLimit = {1, 0, 5};
    fakes::LogCapture log;
    for (const auto& [name, reported] : cases) {
        EXPECT_FALSE(passes(guard, name));
        const std::string breach = R"("caller":false,"event":")" + reported + R"(","rate":1.0)";
        EXPECT_EQ(services->take(),
                  (Lines{"limit of " + name, report(1010123, "telemetry_service_event_rate_limit_breach", breach),
                         "count guard_rate_limit_dropped 1 of " + name}));
        EXPECT_NE(log.take().at(0).find("event: " + std::string(name.substr(0, 9).c_str())), std::string::npos);
    }
}

TEST_F(Guards, EachChangeOfTheCheckpointIsReported) {
    const std::string status = "arvo_telemetry_checkpoint_status_monitor";
    AccountCheckpointGuard guard(services->callback(), services, services);
    EXPECT_EQ(guard.name_, "account_checkpoint_guard");
    services->checkpointed = {2, 3};
    EXPECT_FALSE(passes(guard, "e", 2)) << "the first answer is no change";
    EXPECT_TRUE(passes(guard, "e", 1));
    EXPECT_FALSE(passes(guard, "e", 2));
    EXPECT_FALSE(passes(guard, status + "2", 3));
    EXPECT_TRUE(passes(guard, status, 3)) << "its own report";
    const std::string drop = "count guard_account_checkpointed_dropped 1 of ";
    EXPECT_EQ(services->take(),
              (Lines{"checkpointed 2", drop + "e", "checkpointed 1", report(1, status, R"("is_checkpointed":false)"),
                     "checkpointed 2", report(2, status, R"("is_checkpointed":true)"), drop + "e", "checkpointed 3",
                     drop + status + "2"}));
}

TEST_F(Guards, DynamicTelemetryCarriesItsRecordsOutBeforeItSettlesTheEvent) {
    const std::string guardReport = "telemetry_service_dynamic_telemetry_guard_performance";
    const std::string monitorReport = "telemetry_service_dynamic_telemetry_monitor";
    const std::string fetchReport = "telemetry_service_dynamic_telemetry_config_performance";
    DynamicTelemetryGuard guard(services->callback(), services, services);
    EXPECT_EQ(guard.name_, "dynamic_telemetry_guard");
    const int64_t big = 1'790'000'000'000;  // beyond 32 bits
    // Metrics with the keys of other members give way to them.
    services->logs = {
        {{{{"logging_duration_ms", 1}, {"dynamic_telemetry_config_id", 2}, {"n", big}}, "c1", big}, {{}, "", -1}},
        {{"c2", "app_launch", {{"processed_event_name", 1}, {"m", 1}}, big}, {"", "", {}, 0}}};
    services->unwanted = {"e"};
    Lines expected = {
        "evaluate e",
        "logs",
        report(1000, guardReport,
               R"("dynamic_telemetry_config_id":"c1","logging_duration_ms":1790000000000,"n":1790000000000)"),
        report(1000, guardReport, R"("dynamic_telemetry_config_id":"","logging_duration_ms":-1)"),
        report(1000, monitorReport,
               R"("dynamic_telemetry_config_id":"c2","logging_duration_ms":1790000000000,"m":1,)"
               R"("processed_event_name":"app_launch")"),
        report(1000, monitorReport,
               R"("dynamic_telemetry_config_id":"","logging_duration_ms":0,"processed_event_name":"")"),
        "fetches"};
    const std::string prefix =
        R"("active_dynamic_telemetry_config_id":"c3","fetch_finished_ms":-1790000000000,"fetch_outcome":")";
    for (const char* outcome :
         {"noChange", "persistSuccess", "persistError", "parseError", "endpointError", "userTokenEmpty"}) {
        const auto value = static_cast<FetchOutcome>(services->fetches.size());
        const std::string fetched = value == FetchOutcome::NoChange ? "" : "f";
        services->fetches.push_back({"c3", fetched, -1000 * big - 999, value});
        expected.push_back(report(1000, fetchReport,
                                  prefix + outcome + R"(","fetched_dynamic_telemetry_config_id":")" + fetched + "\""));
    }
    services->fetches.back().fetchedConfigId.reset();
    expected.back() = report(1000, fetchReport, prefix + "userTokenEmpty\"");
    expected.emplace_back("count guard_dynamic_telemetry_dropped 1 of e");
    EXPECT_FALSE(passes(guard, "e"));
    EXPECT_EQ(services->take(), expected);

    const std::tuple<float, const char*, const char*> cases[] = {
        {0.25F, "c7", "4"}, {1, "", "1"}, {0, "", "0"}, {NAN, "", "0"}, {1e-45F, "%n", "18446744073709551615"}};
    for (const auto& [rate, configId, weight] : cases) {
        services->sampleRate = rate;
        services->configId = configId;
        EXPECT_TRUE(passes(guard, "f"));
        EXPECT_EQ(services->take(), (Lines{"evaluate f", "logs", "fetches", "config of 10"}));
        EXPECT_EQ(passed->getJsonString(), R"({"applied_sample_rate":)" + std::string(weight) +
                                               R"(,"dynamic_telemetry_config_id":")" + configId +
                                               R"(","realtime":false})");
    }
}

TEST_F(Guards, AReportThatFailsLeavesTheGuardUsable) {
    AccountCheckpointGuard checkpoint(services->callback(), services, services);
    AccountCheckpointGuard silentCheckpoint(nullptr, services, services);
    services->checkpointed = {2};
    services->reportsFail = true;
    EXPECT_TRUE(passes(checkpoint, "e", 1)) << "the first answer is no change";
    for (int i = 0; i < 2; ++i) EXPECT_THROW(passes(checkpoint, "e", 2), std::runtime_error) << "not reported yet";
    EXPECT_THROW(passes(silentCheckpoint, "e", 2), std::bad_function_call);
    EXPECT_TRUE(passes(silentCheckpoint, "e", 1)) << "nothing to report";
    services->reportsFail = false;
    EXPECT_FALSE(passes(checkpoint, "e", 2));

    RateLimiterGuard rateLimiter(nullptr, services, services);
    services->rateLimit = {0, 0, 0};
    fakes::LogCapture log;
    EXPECT_THROW(passes(rateLimiter, "e"), std::bad_function_call);
    EXPECT_EQ(log.take().size(), 1U);
    EXPECT_FALSE(passes(rateLimiter, "e"));

    EventFilterGuard filter(nullptr, services, services);
    EXPECT_THROW(passes(filter, "e"), std::bad_function_call);
    EXPECT_TRUE(passes(filter, "e")) << "it is known by now";

    DynamicTelemetryGuard dynamicTelemetry(nullptr, services, services);
    services->logs = {{{{}, "", 0}}, {}};
    EXPECT_THROW(passes(dynamicTelemetry, "e"), std::bad_function_call);
    EXPECT_TRUE(passes(dynamicTelemetry, "e"));
}

TEST_F(Guards, AFilteredEventIsMarkedAndEachNewDecisionAudited) {
    const std::string audit = "telemetry_event_filtering_audit", drop = "; count guard_filter_dropped 1 of ";
    const auto calls = [&] {
        std::string text;
        for (const std::string& call : services->take()) text += "; " + call;
        return text;
    };
    const auto auditOf = [&](const char* name, bool isAllowed, int state) {
        Json::Value body = fakes::parsed(R"({"build_product":"arvo2","build_version":"84210","is_developer":false,
            "event_category":"NEEDS_REVIEW","event_schema_timestamp":1790000000000})");
        const char* const facts[] = {"is_bypassed_for_discretionary_app", "is_parvi_account", "data_use_consent",
                                     "is_personalization_purpose_only", "is_ads_personalization_purpose_only"};
        for (size_t i = 0; i < 5; ++i) body[facts[i]] = services->facts[i];
        body["filter_event_name"] = name;
        body["is_allowed"] = isAllowed;
        body["consent_state"] = state;
        body["is_filter_enabled"] = services->filters;
        body["user_consent"] = services->consents;
        body["is_allowed_if_filter_enabled"] = services->allowsIfFiltered;
        const std::string members = fakes::text(body);
        return "; " + report(7, audit, members.substr(1, members.size() - 2)) + " int consent_state";
    };
    android::base::SetProperty("ro.product.name", "arvo2");
    android::base::SetProperty("ro.build.version.incremental", "84210");
    EventFilterGuard guard(services->callback(), services, services);
    EXPECT_EQ(guard.name_, "event_filter_guard");
    services->schemaTimestamp = 1'790'000'000'000;
    const auto data = R"({"utl_logging_package":"com.a"})";
    for (const char* name : {"0", "1", "2", "3", "4"}) {
        services->facts = {};
        services->facts[static_cast<size_t>(*name - '0')] = true;
        const std::string account = std::to_string(services->facts[1]) + std::to_string(services->facts[2]);
        const std::string asked = "; consent 7; timestamp; filters?; parvi 7; data use 7; if filtered " +
                                  std::string(name) + " 1" + account + "0; allowed " + name + " 7 com.a 11; filters?";
        EXPECT_TRUE(passes(guard, name, 7, IntakeFormat::JsonBundle, data));
        EXPECT_EQ(calls(), asked + "; category " + name + "; bypassed com.a 7; purpose " + name + "; ads " + name +
                               "; filters?" + auditOf(name, true, 32));
        EXPECT_EQ(passed->getJsonString(), R"({"event_schema_timestamp":1790000000000,"realtime":false,)"
                                           R"("utl_logging_package":"com.a"})");
        EXPECT_TRUE(passes(guard, name, 7, IntakeFormat::JsonBundle, data));
        EXPECT_EQ(calls(), asked) << "nothing new";
        android::base::SetProperty("ro.product.name", "read once");
    }
    const std::tuple<bool, bool, int> states[] = {{true, false, 16}, {false, true, 0}, {true, true, 32}};
    for (const auto& [filters, consents, state] : states) {
        services->filters = filters;
        services->consents = consents;
        // What counts is what filtering would do, not what is done.
        for (const bool isAllowed : {true, false, false, true}) {
            services->refused = isAllowed ? std::set<std::string>() : std::set<std::string>{"f"};
            EXPECT_EQ(passes(guard, "f", 7), isAllowed);
            EXPECT_EQ(passed->consentState(), state);
            EXPECT_TRUE(calls().ends_with(auditOf("f", isAllowed, state) + (isAllowed ? "" : drop + "f")));
            passes(guard, "f", 7);
            EXPECT_EQ(calls().find("category f"), std::string::npos) << "nothing new";
            services->allowsIfFiltered = !services->allowsIfFiltered;
        }
        EXPECT_EQ(guard.setConsentState(consents), static_cast<uint32_t>(state));
    }
    services->refused = {audit};
    calls();
    EXPECT_FALSE(passes(guard, audit, 7));
    EXPECT_EQ(calls(), "; consent 7; timestamp; parvi 7; data use 7; if filtered " + audit + " 1000; allowed " + audit +
                           " 7  11; filters?" + drop + audit);
    services->refused = {};
    EXPECT_TRUE(passes(guard, audit, 7));
    EXPECT_EQ(passed->getJsonString(), R"({"realtime":false})");
    EXPECT_TRUE(MonitorEventCache::checkAndSetFilterDecisionCache(7, audit, true)) << "recorded all the same";
}

TEST_F(Guards, SystemEventsAreThoseOfTheAppThatCausedThem) {
    const char* const state = "arvo_api_permission_state_event";
    const char* const ops = "arvo_sensitive_app_ops_monitor";
    const std::tuple<const char*, const char*, std::optional<uint32_t>> cases[] = {
        // name, data, uid (none: it throws)
        {state, R"({"source":"listener","android_uid":10123})", 10123},
        {state, R"({"source":"listener","android_uid":9,"data":{"source":"listener","android_uid":10123}})", 10123},
        {state, R"({"source":"listener","android_uid":9,"data":{"x":1}})", 7},
        {state, R"({"source":"listener","android_uid":9,"data":{}})", 9},
        {state, R"({"source":"listener","android_uid":9,"data":"text"})", 7},
        {state, R"({"source":"listener","android_uid":9,"data":5})", 7},
        {state, R"({"source":"listener","android_uid":9,"data":[{"source":"listener"}]})", 7},
        {state, R"({"source":"listener","android_uid":9,"data":[]})", 9},
        {state, R"({"source":"listener","android_uid":9,"data":null})", 9},
        {state, R"({"source":"service","android_uid":10123})", 7},
        {state, R"({"source":["listener"],"android_uid":10123})", 7},
        {state, R"({"source":"listener"})", 0},
        {state, R"({"source":"listener","android_uid":"10123"})", std::nullopt},
        {state, R"({"source":"listener","android_uid":NaN})", std::nullopt},
        {state, R"({"source":"listener","android_uid":10123.9})", 10123},
        {state, R"({"source":"listener","android_uid":true})", 1},
        {state, "[1]", 7},
        {ops, R"({"op_caller_android_uid":10123})", 10123},
        {ops, R"({"data":{"op_caller_android_uid":-1}})", 4294967295},
        {ops, R"({"data":{"x":1},"op_caller_android_uid":10123})", 0},
        {ops, R"({"data":false,"op_caller_android_uid":10123})", 0},
        {ops, R"({"op_caller_android_uid":4294967295})", std::nullopt},
        {ops, R"({"op_caller_android_uid":{}})", std::nullopt},
        {ops, "[1]", 0},
        {"other", R"({"source":"listener","android_uid":9,"op_caller_android_uid":9})", 7},
    };
    EventFilterGuard guard(services->callback(), services, services);
    for (const auto& [name, data, uid] : cases) {
        services->take();
        if (!uid) {
            EXPECT_THROW(passes(guard, name, 7, IntakeFormat::JsonBundle, data), std::exception) << data;
            continue;
        }
        EXPECT_TRUE(passes(guard, name, 7, IntakeFormat::JsonBundle, data));
        EXPECT_EQ(passed->uid(), *uid) << name << data;
        EXPECT_EQ(services->take().front(), "consent " + std::to_string(*uid));
    }
    auto bundled = std::make_unique<TelemetryEventBundle>("e", 7U, true, fakes::bundleOf(R"({"realtime":true})"));
    EXPECT_EQ(guard.setOriginalUid("e", std::move(bundled))->size(), 1U) << "its bundle has become JSON";
}

struct VerifyingPathwayGuard : PathwayGuard {
    using PathwayGuard::PathwayGuard;
    bool isEventInVerification(const std::string& eventName) override { return eventName == "verified"; }
};

TEST_F(Guards, CountersAddUpWhenThreadsShareAProcessor) {
    clocksNs.clear();
    services->checkpointed = {7};
    services->rateLimit = {100, 100, 3600};
    services->unwanted = {"unwanted"};
    const auto callback = services->callback();
    const auto filter = std::make_shared<EventFilterGuard>(callback, services, services);
    const auto sampling = std::make_shared<DynamicTelemetryGuard>(callback, services, services);
    std::atomic<int> kept = 0;
    const auto run = [&] {
        // Two of its guards are each thread's own, yet what they know is the process's.
        const auto processor = TelemetryEventProcessorBuilder(nullptr, nullptr)
                                   .addGuard(std::make_shared<TelemetryStateGuard>(callback))
                                   .addGuard(std::make_shared<VerifyingPathwayGuard>(callback, services))
                                   .addGuard(std::make_shared<AccountCheckpointGuard>(callback, services, services))
                                   .addGuard(filter)
                                   .addGuard(std::make_shared<RateLimiterGuard>(callback, services, services))
                                   .addGuard(sampling)
                                   .build();
        const std::pair<const char*, uint32_t> kinds[] = {
            {"verified", 1}, {"held", 7}, {"a", 1}, {"b", 1}, {"unwanted", 1}};
        for (int i = 0; i < 2000; ++i) {
            const auto& [name, uid] = kinds[i % 5];
            const auto format = i % 5 == 0 ? IntakeFormat::HalAtom : IntakeFormat::JsonBundle;
            auto event = std::make_unique<TelemetryEventBundle>(name, Json::Value(), uid, format);
            if (processor->processEvent(std::move(event)).hasValue()) ++kept;
        }
    };
    std::thread other(run);
    run();
    other.join();

    const Lines calls = services->take();
    const auto counted = [&](const std::string& call) { return std::count(calls.begin(), calls.end(), call); };
    EXPECT_EQ(counted("count guard_pathway_dropped 1 of verified"), 800);
    EXPECT_EQ(counted("count guard_account_checkpointed_dropped 1 of held"), 800);
    for (const std::string name : {"a", "b", "unwanted"}) {
        EXPECT_EQ(counted("category " + name), 1) << "audited once";
        EXPECT_LE(counted("limit of " + name), 2) << "asked once by each guard";
        EXPECT_EQ(counted("count guard_rate_limit_dropped 1 of " + name), 700);
    }
    EXPECT_EQ(counted("count guard_dynamic_telemetry_dropped 1 of unwanted"), 100);
    EXPECT_EQ(kept, 200);
    EXPECT_EQ(services->judged, 2400);
}

}  // namespace Velo::OS::Telemetry
