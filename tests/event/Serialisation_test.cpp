#include <gtest/gtest.h>

#include <functional>

#include "telemetry/TelemetryEventBundle.h"
#include "tests/fakes/BundleOf.h"
#include "tests/fakes/Json.h"
#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using fakes::arrayOf;
using fakes::BundleOf;
using fakes::parsed;
using fakes::text;

TelemetryEventBundle jsonEvent(const char* data) {
    return TelemetryEventBundle("e", parsed(data), 1000, IntakeFormat::JsonBundle);
}

TEST(Serialisation, WritesCompactJsonWithTheWritersDefaults) {
    const std::string longText(200'000, 'x');
    TelemetryEventBundle event = jsonEvent(R"({"b":[1,{"c":0.1}],"a":"\u00e9\n/\u0000"})");
    event.addString("t", longText);
    EXPECT_EQ(event.getJsonString(),
              R"({"a":"\u00e9\n/\u0000","b":[1,{"c":0.10000000000000001}],"realtime":false,"t":")" + longText + "\"}");
    EXPECT_EQ(jsonEvent("{}").getJsonString(), R"({"realtime":false})") << "after a text that is not kept whole";
}

TEST(Serialisation, TheTextIsKeptUntilSomethingIsAdded) {
    TelemetryEventBundle event = jsonEvent(R"({"a":1})");
    const char* const bytes = event.getJsonString().data();
    event.addProperty("p", "not part of the data");
    EXPECT_EQ(event.getJsonString().data(), bytes);

    const struct {
        std::function<void(TelemetryEvent&)> add;
        const char* expected;
    } cases[] = {
        {[](auto& e) { e.addBool("n", true); }, "true"},
        {[](auto& e) { e.addInt("n", -1); }, "-1"},
        {[](auto& e) { e.addUInt("n", UINT32_MAX); }, "4294967295"},
        {[](auto& e) { e.addLong("n", INT64_MIN); }, "-9223372036854775808"},
        {[](auto& e) { e.addULong("n", UINT64_MAX); }, "18446744073709551615"},
        {[](auto& e) { e.addDouble("n", 2.0); }, "2.0"},
        {[](auto& e) { e.addString("n", std::string("s\0t", 3)); }, R"("s\u0000t")"},
        {[](auto& e) { e.addString("n", "literal"); }, R"("literal")"},
        {[](auto& e) {
             e.addStringVector("n", {"x", "y"});
         },
         R"(["x","y"])"},
        {[](auto& e) { e.addStringVector("n", {}); }, "[]"},
        {[](auto& e) { e.addJson("n", parsed(R"({"k":null})")); }, R"({"k":null})"},
    };
    for (const auto& c : cases) {
        c.add(event);
        EXPECT_EQ(event.getJsonString(), R"({"a":1,"n":)" + std::string(c.expected) + R"(,"realtime":false})");
    }
}

TEST(Serialisation, ABundleIsConvertedOnceAndStaysAsItWas) {
    const BundleOf bundle = BundleOf().with("a", 1).with("b", "x").with("o", BundleOf().with("k", true));
    TelemetryEventBundle event("e", 1000, true, bundle);
    EXPECT_EQ(event.size(), 4U);
    event.addInt("a", 2);
    EXPECT_EQ(event.size(), 5U) << "counted in the bundle and in the data";
    EXPECT_EQ(event.getJsonString(), R"({"a":2,"b":"x","o":{"k":true},"realtime":true})");
    EXPECT_EQ(event.size(), 4U);

    TelemetryEventBundle same("e", 1000, true, bundle);
    same.addInt("a", 2);
    EXPECT_FALSE(event == same) << "not converted yet, so the documents differ";
    same.getJsonValue();
    EXPECT_TRUE(event == same) << "the bundles are equal still";
}

TEST(Serialisation, AFailedConversionIsWarnedOfOncePerChange) {
    const std::vector<std::string> warning = {
        "5 TelemetryService: Event [name: 100%s] wasn't successfully converted to json."};
    const auto check = [&](TelemetryEventBundle event, const char* value, size_t size) {
        SCOPED_TRACE(value);
        fakes::LogCapture log;
        EXPECT_EQ(event.getJsonString(), "");
        EXPECT_EQ(event.getJsonString(), "");
        EXPECT_EQ(log.take(), warning);
        EXPECT_EQ(text(event.getJsonValue()), value);
        EXPECT_EQ(event.size(), size);

        event.addJson("o", Json::Value());  // what was in the way is gone, but conversion is not tried again
        EXPECT_EQ(event.getJsonString(), "");
        EXPECT_EQ(log.take(), warning);
    };
    check({"100%s", 1000, false, arrayOf().with("0", 1)}, R"({"realtime":false})", 3);
    check({"100%s", 1000, false, BundleOf().with("b", true).with("o", arrayOf().with("1", 1))},
          R"({"b":true,"o":[null],"realtime":false})", 5);
    check({"100%s", parsed("[1]"), 1000, IntakeFormat::JsonBundle}, "[1]", 1);
}

TEST(Serialisation, TheHeaderHoldsPropertiesAndTheApp) {
    TelemetryEventBundle event = jsonEvent(R"({"utl_app_id":5,"sdk_app_package_version_name":"1.2"})");
    EXPECT_EQ(event.getJsonBatchHeaderString(), R"({"app_id":5,"app_version":"1.2"})");
    event.addProperty("app_id", "overwritten");
    event.addProperty("app_version", "overwritten");
    event.addProperty("z", "1");
    event.addProperty("a", "2");
    event.addProperty("z", "3");
    EXPECT_EQ(event.getJsonBatchHeaderString(), R"({"a":"2","app_id":5,"app_version":"1.2","z":"3"})");

    TelemetryEventBundle unconvertible("e", 1000, false, arrayOf().with("utl_app_id", 6));
    EXPECT_EQ(unconvertible.getJsonBatchHeaderString(), R"({"app_id":6,"app_version":""})");
}

TEST(Serialisation, TheDebugLine) {
    TelemetryEventBundle event("e", Json::Value(), 1000, IntakeFormat::JsonBundle);
    EXPECT_EQ(event.getDebugString(), R"(name: e uid: 1000, time: 0, size: 1, priority: 0, data: {"realtime":false}, )"
                                      R"(header: {"app_id":736366014426470,"app_version":""})");
    TelemetryEventBundle bundle("b", UINT32_MAX, true, BundleOf().with("timestamp", int64_t{-5}));
    EXPECT_EQ(bundle.getDebugString().substr(0, 56), "name: b uid: 4294967295, time: -5, size: 2, priority: 1,");
}

}  // namespace Velo::OS::Telemetry
