#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <locale>
#include <random>

#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/VerificationMonitor.h"
#include "tests/fakes/LogCapture.h"
#include "tests/fakes/Payloads.h"
#include "tests/fakes/SmallStack.h"

namespace Velo::OS::Telemetry {

using fakes::bundleOf;
using fakes::parsed;
using fakes::text;
using Lines = std::vector<std::string>;

TelemetryEventBundle event(const char* data, const char* name = "e") {
    return TelemetryEventBundle(name, parsed(data), 1000, IntakeFormat::JsonBundle);
}

TEST(StringIdentifier, IsTheNameOrANumberOfThePayload) {
    const Lines none;
    const Lines noCampaign = {"6 TelemetryService: ondemand's campaign_id is not found."};
    const Lines noPayload = {"6 TelemetryService: Perf payload's json format is invalid. perf_payload_json not found."};
    const Lines badPayload = {"6 TelemetryService: Perf payload's json format is invalid."};
    const Lines noMarker = {"5 TelemetryService: KLX event's marker_id is not found."};
    const std::string tooDeep = R"({"perf_payload_json":")" + std::string(1001, '[') + "\"}";
    const struct {
        const char *name, *data, *expected;
        const Lines& log;
    } cases[] = {
        {"app_launch", R"({"campaign_id":4,"marker_id":5})", "app_launch", none},
        {"perfs", R"({"marker_id":5})", "perfs", none},
        {"ondemand_statsd_utl", R"({"campaign_id":42})", "odt_42", none},
        {"ondemand_statsd_utl", R"({"campaign_id":-7.9})", "odt_-7", none},
        {"ondemand_statsd_utl", R"({"campaign_id":-1})", "ondemand_statsd_utl", noCampaign},
        {"ondemand_statsd_utl", R"({"campaign_id":"42"})", "ondemand_statsd_utl", noCampaign},
        {"ondemand_statsd_utl", R"({"campaign_id":9223372036854775808})", "ondemand_statsd_utl", noCampaign},
        {"ondemand_statsd_utl", "[42]", "ondemand_statsd_utl", noCampaign},
        {"perf", R"({"marker_id":7,"perf_payload_json":"{"})", "7", none},
        {"perf", R"({"marker_id":7,"perf_payload_json":"{\"marker_id\":8}"})", "7", none},
        {"perf", R"({"marker_id":null,"perf_payload_json":"{\"marker_id\":8}"})", "perf", noMarker},
        {"perf", R"({"marker_id":"7"})", "perf", noMarker},
        {"perf", R"({"marker_id":-1})", "perf", noMarker},
        {"perf_utl", R"({"perf_payload_json":"{\"marker_id\":12}"})", "12", none},
        {"perf_utl", R"({"perf_payload_json":"{\"marker_id\":1e30}"})", "perf_utl", noMarker},
        {"perf_utl", R"({"perf_payload_json":"{\"marker\":12}"})", "perf_utl", badPayload},
        {"perf_utl", R"({"perf_payload_json":"[12]"})", "perf_utl", badPayload},
        {"perf_utl", R"({"perf_payload_json":{"marker_id":12}})", "perf_utl", badPayload},
        {"perf_utl", tooDeep.c_str(), "perf_utl", badPayload},
        {"perf_utl", "{}", "perf_utl", noPayload},
        {"perf_utl", "[]", "perf_utl", noPayload},
    };
    for (const auto& c : cases) {
        TelemetryEventBundle e = event(c.data, c.name);
        fakes::LogCapture log;
        EXPECT_EQ(e.getStringIdentifier(), c.expected) << c.name << c.data;
        EXPECT_EQ(log.take(), c.log) << c.name << c.data;
        e.addInt("marker_id", 99);
        EXPECT_EQ(e.getStringIdentifier(), c.expected) << c.name << c.data;
        EXPECT_EQ(log.take(), none) << "computed once";
    }
    EXPECT_EQ(TelemetryEventBundle("perf", 1000, false, bundleOf(R"({"marker_id":9})")).getStringIdentifier(), "9");
    EXPECT_EQ(std::string(kKlxEventName) + kLegacyKlxEventName + kOnDemandPrefix, "perfperf_utlodt_");
}

/// Texts of any bytes, numbers of any kind, and arrays and objects of these.
Json::Value anyValue(std::mt19937& random, int depth) {
    const auto number = [&](uint32_t below) { return static_cast<int>(random() % below); };
    const auto anyText = [&] {
        const bool isPlain = number(2) == 0;
        std::string text(random() % 20, 'a');
        for (char& c : text) c = static_cast<char>(isPlain ? ' ' + number(96) : number(256));
        return text;
    };
    switch (number(depth > 0 ? 8 : 6)) {
        case 0:
            return number(2) ? Json::Value() : Json::Value(number(2) == 0);
        case 1:
            return Json::Value(static_cast<Json::Int64>(uint64_t{random()} << number(33)) * (number(2) ? 1 : -1));
        case 2:
            return Json::Value(static_cast<Json::UInt64>(uint64_t{random()} << 32 | random()));
        case 3:
            return Json::Value((number(2) ? 1 : number(1000)) * std::pow(10, number(640) - 320));
        case 6: {
            Json::Value array(Json::arrayValue);
            for (int i = number(4); i > 0; --i)
                array[static_cast<Json::ArrayIndex>(number(6))] = anyValue(random, depth - 1);
            return array;
        }
        case 7: {
            Json::Value object(Json::objectValue);
            for (int i = number(5); i > 0; --i) object[anyText()] = anyValue(random, depth - 1);
            const auto place = static_cast<Json::CommentPlacement>(number(Json::numberOfCommentPlacement));
            if (number(20) == 0) object.setComment(std::string("/* odd */"), place);
            return object;
        }
        default:
            return Json::Value(anyText());
    }
}

TEST(Serialisation, IsWhatJsoncppWrites) {
    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i) {
        TelemetryEventBundle e = event("{}");
        e.addJson("any", anyValue(random, 3));
        if (i == 0) e.addString("long", std::string(200'000, 'x'));  // more than what is kept for the next text
        e.addString("byte", std::string(static_cast<size_t>(i % 11), 'a') + static_cast<char>(i));
        const std::string key = i % 2 ? "app_if" : "app_idle\"";
        const std::string property = anyValue(random, 0).asString();
        e.addProperty(key, property);
        ASSERT_EQ(e.getJsonString(), text(e.getJsonValue()));
        Json::Value header = parsed(R"({"app_id":736366014426470,"app_version":""})");
        header[key] = property;
        ASSERT_EQ(e.getJsonBatchHeaderString(), text(header));
    }
}

TEST(Equality, IsWhatJsoncppsCompareFinds) {
    Json::Value values = parsed(R"([[null],[],{},0,0.0,-0.0,1,1.0,NaN,"","\u0000",false,{"a":1},{"a":NaN},{"a":2.5},
        {"b":1},{"a":1,"b":1},[null,1],[[1]],["a\u0000b"],["a\u0000c"],18446744073709551615])");
    values.append(1U);
    values.append(Json::arrayValue)[1] = 1;  // its first element was never set
    for (const Json::Value& left : values) {
        for (const Json::Value& right : values) {
            TelemetryEventBundle one("e", left, 0, IntakeFormat::JsonBundle);
            TelemetryEventBundle other("e", right, 0, IntakeFormat::JsonBundle);
            EXPECT_EQ(one == other, left.compare(right) == 0) << left << right;
        }
    }
}

TEST(Nesting, OfTheDataIsKeptUpToTheLimitAndRefusedBeyond) {
    fakes::LogCapture log;
    fakes::onSmallStack([&] {
        TelemetryEventBundle e("e", fakes::nested(kMaxNesting), 1, IntakeFormat::JsonBundle);
        TelemetryEventBundle same("e", e.getJsonValue(), 1, IntakeFormat::JsonBundle);
        EXPECT_TRUE(e == same) << "and in no time";
        same.addJson("k", fakes::nested(kMaxNesting - 1));
        EXPECT_FALSE(e == same);
        EXPECT_EQ(log.take(), Lines());
        TelemetryEventBundle refused("e", fakes::nested(100'000), 1, IntakeFormat::JsonBundle);
        EXPECT_EQ(refused.getJsonString(), "");
        e.addJson("k", fakes::nested(kMaxNesting));
        EXPECT_GT(e.getDebugString().size(), 3 * kMaxNesting) << "the member stays";
        EXPECT_EQ(VerificationMonitor({}).sortEventFields(fakes::nested(100'000), {}).second, 0U);
    });
    const Lines lines = log.take();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "5 TelemetryService: Data of event [name: e] is nested too deep and was left out.");
    EXPECT_EQ(lines[2], "5 TelemetryService: Member [k] of event [name: e] is nested too deep and was not added.");
}

TEST(Serialisation, TheTextIsKeptUntilSomethingIsAdded) {
    TelemetryEventBundle e = event(R"({"a":1})");
    const char* const bytes = e.getJsonString().data();
    e.addProperty("p", "not part of the data");
    EXPECT_EQ(e.getJsonString().data(), bytes);

    const std::pair<std::function<void(TelemetryEvent&)>, const char*> cases[] = {
        {[](auto& to) { to.addBool("n", true); }, "true"},
        {[](auto& to) { to.addInt("n", -1); }, "-1"},
        {[](auto& to) { to.addUInt("n", UINT32_MAX); }, "4294967295"},
        {[](auto& to) { to.addLong("n", INT64_MIN); }, "-9223372036854775808"},
        {[](auto& to) { to.addULong("n", UINT64_MAX); }, "18446744073709551615"},
        {[](auto& to) { to.addDouble("n", 2.0); }, "2.0"},
        {[](auto& to) { to.addDouble("n", -5e-324); }, "-4.9406564584124654e-324"},
        {[](auto& to) { to.addDouble("n", std::nan("")); }, "null"},
        {[](auto& to) { to.addDouble("n", -INFINITY); }, "-1e+9999"},
        {[](auto& to) { to.addString("n", std::string("s\0t", 3)); }, R"("s\u0000t")"},
        {[](auto& to) { to.addString("n", "literal"); }, R"("literal")"},
        {[](auto& to) {
             to.addStringVector("n", {"x", "y"});
         },
         R"(["x","y"])"},
        {[](auto& to) { to.addStringVector("n", {}); }, "[]"},
        {[](auto& to) { to.addJson("n", parsed(R"({"k":null})")); }, R"({"k":null})"},
    };
    for (const auto& [add, expected] : cases) {
        add(e);
        EXPECT_EQ(e.getJsonString(), R"({"a":1,"n":)" + std::string(expected) + R"(,"realtime":false})");
    }
}

TEST(Serialisation, ABundleIsConvertedOnceAndStaysAsItWas) {
    const fakes::Bundle bundle = bundleOf(R"({"a":1,"b":"x","o":{"k":true}})");
    TelemetryEventBundle e("e", 1000, true, bundle);
    EXPECT_EQ(e.size(), 4U);
    e.addInt("a", 2);
    EXPECT_EQ(e.size(), 5U) << "counted in the bundle and in the data";
    EXPECT_EQ(e.getJsonString(), R"({"a":2,"b":"x","o":{"k":true},"realtime":true})");
    EXPECT_EQ(e.size(), 4U);
    TelemetryEventBundle same("e", parsed(e.getJsonString()), 1000, IntakeFormat::JsonBundle);
    EXPECT_FALSE(e == same) << "the bundle is still there";
}

TEST(Serialisation, AFailedConversionIsWarnedOfOncePerChange) {
    const auto check = [](TelemetryEventBundle e, const char* value, size_t size) {
        const Lines warning = {"5 TelemetryService: Event [name: 100%s] wasn't successfully converted to json."};
        fakes::LogCapture log;
        EXPECT_EQ(e.getJsonString() + e.getJsonString(), "");
        EXPECT_EQ(log.take(), warning);
        EXPECT_EQ(text(e.getJsonValue()), value);
        EXPECT_EQ(e.size(), size) << value;
        e.addJson("o", Json::Value());  // what was in the way is gone, but conversion is not tried again
        EXPECT_EQ(e.getJsonString(), "");
        EXPECT_EQ(log.take(), warning);
    };
    check({"100%s", 1000, false, bundleOf(R"({"utl_array_of_bundles":[],"0":1})")}, R"({"realtime":false})", 3);
    check({"100%s", 1000, false, bundleOf(R"({"b":true,"o":{"utl_array_of_bundles":true,"1":1}})")},
          R"({"b":true,"o":[null],"realtime":false})", 5);
    check(event("[1]", "100%s"), "[1]", 1);
}

TEST(Serialisation, WorksUntilTheProcessHasEnded) {
    struct Flush {
        ~Flush() {
            const char* bundle = R"({"a":{"utl_array_of_bundles":1,"0":5},"perf_payload_json":"{\"marker_id\":3}"})";
            TelemetryEventBundle e("perf", 1, false, bundleOf(bundle));
            std::fputs((e.getStringIdentifier() + e.getJsonString()).c_str(), stderr);
        }
    };
    const auto endProcess = [] {
        static const Flush older;  // than what the library keeps, so that it outlives that
        { const Flush first; }
        std::exit(0);
    };
    EXPECT_EXIT(endProcess(), testing::ExitedWithCode(0), "3.\"a\":.5.*3.\"a\":.5");
}

TEST(Serialisation, TheHeaderHoldsPropertiesAndTheApp) {
    TelemetryEventBundle e(
        "e", 1, false, bundleOf(R"({"utl_array_of_bundles":1,"utl_app_id":5,"sdk_app_package_version_name":"1.2"})"));
    EXPECT_EQ(e.getJsonBatchHeaderString(), R"({"app_id":5,"app_version":"1.2"})");
    for (const char* key : {"app_id", "app_version", "z", "a"}) e.addProperty(key, "1");
    e.addProperty("z", "2");
    EXPECT_EQ(e.getJsonBatchHeaderString(), R"({"a":"1","app_id":5,"app_version":"1.2","z":"2"})");
}

TEST(Serialisation, TheDebugLine) {
    struct Grouping : std::numpunct<char> {
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale::global(std::locale(std::locale(), new Grouping));
    EXPECT_EQ(event("null").getDebugString(),
              R"(name: e uid: 1000, time: 0, size: 1, priority: 0, data: {"realtime":false}, )"
              R"(header: {"app_id":736366014426470,"app_version":""})");
    TelemetryEventBundle bundle("b", UINT32_MAX, true, bundleOf(R"({"timestamp":-5})"));
    EXPECT_EQ(bundle.getDebugString().substr(0, 56), "name: b uid: 4294967295, time: -5, size: 2, priority: 1,");
}

}  // namespace Velo::OS::Telemetry
