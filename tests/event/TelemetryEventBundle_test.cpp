#include "telemetry/TelemetryEventBundle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>

#include "tests/fakes/LogCapture.h"
#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry {

using enum IntakeFormat;
using fakes::bundleOf;
using fakes::parsed;
using fakes::text;

TelemetryEventBundle jsonEvent(const std::string& data, IntakeFormat format = JsonBundle) {
    return TelemetryEventBundle("e", parsed(data), 1000, format);
}

TelemetryEventBundle bundleEvent(const std::string& bundle, bool realtime = false) {
    return TelemetryEventBundle("e", 1000, realtime, bundleOf(bundle));
}

/// An accessor that answers from one member, what it answers when that is of no use, and the members it can use.
struct Accessor {
    const char* key;
    std::function<Json::Value(const TelemetryEventBundle&)> read;
    const char* otherwise;
    enum { Text, Number, Flag } accepts;
};

TEST(TelemetryEventBundle, AccessorsYieldTheMemberOrTheirDefault) {
    const auto number = [](int64_t value) { return Json::Value(Json::Int64{value}); };
    const auto pathway = [](auto& e) { return e.getLoggingPathway().value_or("none"); };
    const Accessor accessors[] = {
        {"__sessions_v2", [](auto& e) { return e.sessionsV2(); }, R"("")", Accessor::Text},
        {"utl_logging_package", [](auto& e) { return e.loggingPackage(); }, R"("")", Accessor::Text},
        {"build_version", [](auto& e) { return e.osBuildNumber(); }, R"("")", Accessor::Text},
        {"sdk_app_package_version_name", [](auto& e) { return e.appVersion(); }, R"("")", Accessor::Text},
        {"utl_logging_pathway", pathway, R"("none")", Accessor::Text},
        {"timestamp", [=](auto& e) { return number(e.time()); }, "0", Accessor::Number},
        {"utl_realtime_ms", [=](auto& e) { return number(e.clientCreatedTime()); }, "0", Accessor::Number},
        {"utl_app_id", [=](auto& e) { return number(e.appId()); }, "736366014426470", Accessor::Number},
        {"utl_eventTag", [=](auto& e) { return number(e.tags()); }, "0", Accessor::Number},
        {"applied_sample_rate", [=](auto& e) { return number(e.sampleRateAsPelko()); }, "1", Accessor::Number},
        {"realtime", [](auto& e) { return e.priority(); }, "false", Accessor::Flag},
        {"adjusted", [](auto& e) { return e.adjustedTime(); }, "false", Accessor::Flag},
    };
    const struct {
        const char* value;
        const char* as[3];  // text, number, flag; null: the default
    } values[] = {
        {"null", {}},
        {"[]", {}},
        {R"({"a":1})", {}},
        {R"("5")", {R"("5")"}},
        {"true", {nullptr, nullptr, "true"}},
        {"5", {nullptr, "5"}},
        {"-7.9", {nullptr, "-7"}},
        {"9223372036854775807", {nullptr, "9223372036854775807"}},
        {"9223372036854775808", {}},  // 2^63, held as an unsigned integer and as a real
        {"9223372036854775808.0", {}},
        {"9223372036854774784.0", {nullptr, "9223372036854774784"}},  // the last real before it
        {"18446744073709551615", {}},
        {"-9223372036854775808", {nullptr, "-9223372036854775808"}},
        {"-9223372036854775808.0", {nullptr, "-9223372036854775808"}},
        {"-9223372036854777856.0", {}},
        {"-1e30", {}},
        {"NaN", {}},
        {"-Infinity", {}},
    };
    fakes::LogCapture unknownPathways;
    for (const Accessor& accessor : accessors) {
        for (const auto& v : values) {
            TelemetryEventBundle event = jsonEvent("{}");
            event.addJson(accessor.key, parsed(v.value));
            const char* expected = v.as[accessor.accepts] ? v.as[accessor.accepts] : accessor.otherwise;
            EXPECT_EQ(text(accessor.read(event)), expected) << accessor.key << " " << v.value;
            if (accessor.key == std::string("realtime")) continue;  // the data has it, so the bundle is not asked
            const auto bundled = bundleEvent(R"({")" + std::string(accessor.key) + "\":" + v.value + "}");
            EXPECT_EQ(text(accessor.read(bundled)), expected) << "in a bundle: " << accessor.key << " " << v.value;
        }
        for (const char* data : {"null", "[1]", R"("text")"}) {
            EXPECT_EQ(text(accessor.read(jsonEvent(data))), accessor.otherwise) << accessor.key << data;
        }
    }
    TelemetryEventBundle latest = jsonEvent("{}");
    latest.addULong("timestamp", INT64_MAX);
    EXPECT_EQ(latest.time(), INT64_MAX) << "the largest unsigned integer that is a time";
    EXPECT_EQ(jsonEvent(R"({"utl_app_id":0})").appId(), 736366014426470);
    EXPECT_EQ(jsonEvent(R"({"applied_sample_rate":0})").sampleRateAsPelko(), 0) << "not the default";
    EXPECT_EQ(jsonEvent(R"({"realtime":true})").priority(), false) << "JSON events are never realtime";
    EXPECT_EQ(jsonEvent("{}").validateStr(Json::Value(5), "d"), "d");
}

TEST(TelemetryEventBundle, UserIdComesFromThePropertyOrTheMember) {
    const auto userId = [](const std::string& id) { return jsonEvent(R"({"id":)" + id + "}").arvoUserId(); };
    EXPECT_EQ(userId(R"("0042")"), 42);
    EXPECT_EQ(userId(R"("9223372036854775807")"), INT64_MAX);
    EXPECT_EQ(userId("-5"), -5);
    EXPECT_EQ(userId("100004217733019"), 100004217733019);
    for (const char* other : {R"("9223372036854775808")", R"("-5")", R"("5\u0000")", R"("")", "5.5",
                              "18446744073709551615", "9223372036854775808.0", "NaN", "true", "null"}) {
        EXPECT_EQ(userId(other), 0) << other;
    }
    TelemetryEventBundle event = jsonEvent(R"({"id":5})");
    EXPECT_EQ(event.deviceId() + std::to_string(event.consentState()), "0");
    event.addProperty("morlek_device_id", "d");
    event.addProperty("consent_state", "3");
    event.addProperty("id", "-7 and more");
    EXPECT_EQ(event.deviceId() + std::to_string(event.consentState()), "d3");
    EXPECT_EQ(event.arvoUserId(), -7);
    EXPECT_EQ(event.getArvoUserIdFromSorel(), 5);
    event.addProperty("id", "none");
    EXPECT_THROW(event.arvoUserId(), std::invalid_argument);
    event.addProperty("consent_state", "99999999999999999999");
    EXPECT_THROW(event.consentState(), std::out_of_range);
}

TEST(TelemetryEventBundle, ABundleAnswersForItselfUntilItIsConverted) {
    TelemetryEventBundle event = bundleEvent(R"({"timestamp":5,"adjusted":true,"o":{"k":1}})", true);
    event.addInt("timestamp", 6);
    EXPECT_EQ(event.time(), 6) << "added values win";
    EXPECT_TRUE(event.adjustedTime() && event.priority());
    EXPECT_TRUE(event.getFromEventMetadata("o").isNull()) << "scalars only";
    event.getJsonValue();
    EXPECT_EQ(text(event.getFromEventMetadata("o")), R"({"k":1})");
    EXPECT_TRUE(event.adjustedTime());
    event.addJson("adjusted", Json::Value());
    EXPECT_FALSE(event.adjustedTime()) << "the bundle is not asked any more";

    TelemetryEventBundle unconvertible = bundleEvent(R"({"utl_array_of_bundles":true,"timestamp":5})");
    unconvertible.getJsonValue();
    EXPECT_EQ(unconvertible.time(), 5) << "a bundle that was not converted is asked still";
}

TEST(TelemetryEventBundle, TheInverseOfTheSampleRateIsStored) {
    struct : TelemetryEventBundle {
        using TelemetryEventBundle::TelemetryEventBundle;
        void addULong(const std::string& key, unsigned long value) override { stored = {key, value}; }
        std::pair<std::string, unsigned long> stored;
    } event("e", 1000, false);
    const std::pair<float, unsigned long> cases[] = {{0.01F, 100},
                                                     {0.3F, 3},
                                                     {1.0F, 1},
                                                     {2.0F, 0},
                                                     {0.0F, 0},
                                                     {-0.5F, 0},
                                                     {-1e-45F, 0},
                                                     {NAN, 0},
                                                     {INFINITY, 0},
                                                     {-INFINITY, 0},
                                                     {1e-30F, UINT64_MAX},
                                                     {1e-45F, UINT64_MAX},
                                                     {0x1p-64F, UINT64_MAX},
                                                     {0x1p-63F, 1UL << 63}};
    for (const auto& [rate, weight] : cases) {
        event.setSampleRate(rate);
        EXPECT_EQ(event.stored, std::pair(std::string("applied_sample_rate"), weight)) << rate;
    }
}

TEST(TelemetryEventBundle, MoveConstructionForgets) {
    TelemetryEventBundle source("perf", 7, true, bundleOf(R"({"marker_id":9})"));
    source.addProperty("morlek_device_id", "d");
    source.setUid(8);
    EXPECT_EQ(source.getStringIdentifier(), "9");
    TelemetryEventBundle moved(std::move(source));
    EXPECT_EQ(moved.name() + moved.deviceId() + std::to_string(moved.uid()), "perf8");
    EXPECT_EQ(moved.size(), 3U) << "unconverted again: the marker counts in the bundle and in the data";
    moved.addInt("marker_id", 10);
    EXPECT_EQ(moved.getStringIdentifier(), "10");

    EXPECT_EQ(source.name(), "");  // NOLINT(bugprone-use-after-move): a moved-from event still answers
    EXPECT_TRUE(source.getFromEventMetadata("marker_id").isNull()) << "nor is its bundle asked";
    source.addInt("k", 1);
    EXPECT_EQ(source.getJsonString(), R"({"k":1})");
    TelemetryEventBundle array = bundleEvent(R"({"utl_array_of_bundles":true,"0":5})");
    const TelemetryEventBundle elsewhere(std::move(array));
    EXPECT_EQ(array.getJsonString(), "[5]");  // NOLINT(bugprone-use-after-move): no data is in the way
}

TEST(TelemetryEventBundle, MoveAssignmentReplacesBundleAndDocumentAlone) {
    TelemetryEventBundle target("target", 7, false);
    target.addProperty("morlek_device_id", "d");
    EXPECT_EQ(target.getJsonString(), R"({"realtime":false})");
    target = TelemetryEventBundle("source", parsed(R"({"a":1})"), 9, HalAtom);
    auto& self = target;
    target = std::move(self);
    EXPECT_EQ(target.name() + target.deviceId() + std::to_string(target.uid()), "sourced7");
    EXPECT_EQ(target.getIntakeFormat(), JsonBundle);
    EXPECT_EQ(target.getJsonString(), R"({"realtime":false})") << "the cached text stays";
}

TEST(TelemetryEventBundle, EqualityIsThatOfBundleAndDocument) {
    TelemetryEventBundle event = bundleEvent(R"({"a":1})");
    TelemetryEventBundle same("e", 2, false, bundleOf(R"({"a":1})"));
    same.addProperty("p", "q");
    TelemetryEventBundle otherBundle = bundleEvent(R"({"a":2})");
    TelemetryEventBundle otherData = bundleEvent(R"({"a":1})", true);
    EXPECT_TRUE(event == same);
    EXPECT_FALSE(event == otherBundle);
    EXPECT_FALSE(event == otherData);
}

TEST(IntakeFormat, AtomIdsFallIntoRanges) {
    const std::pair<int, IntakeFormat> firstOfRange[] = {
        {INT32_MIN, SpecificAtom}, {2, AndroidAtom},  {100000, SpecificAtom}, {111222, GenericAtom},
        {111223, SpecificAtom},    {115000, HalAtom}, {120000, NestedAtom},   {130000, SpecificAtom}};
    IntakeFormat before = SpecificAtom;
    for (const auto& [id, format] : firstOfRange) {
        EXPECT_EQ(getAtomIntakeFormat(id), format) << id;
        EXPECT_EQ(getAtomIntakeFormat(std::max(id, 1) - 1), before) << id - 1;
        before = format;
    }
    EXPECT_EQ(getAtomIntakeFormat(INT32_MAX), SpecificAtom);
}

TEST(IntakeFormat, AKnownPathwayOverridesTheFormat) {
    const auto formatOf = [](const char* pathway) {
        return jsonEvent(R"({"utl_logging_pathway":)" + std::string(pathway) + "}", HalAtom).getIntakeFormat();
    };
    fakes::LogCapture log;
    EXPECT_EQ(formatOf(R"("osndk")"), OsNdk);
    EXPECT_EQ(formatOf("5"), HalAtom);
    EXPECT_EQ(bundleEvent(R"({"utl_logging_pathway":"libtelemetry"})").getIntakeFormat(), Libtelemetry);
    EXPECT_EQ(bundleEvent("{}").getIntakeFormat(), JsonBundle);
    EXPECT_EQ(log.take(), std::vector<std::string>());
    EXPECT_EQ(formatOf(R"("LibTelemetry%s")"), HalAtom);
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 TelemetryService: Unknown logging pathway LibTelemetry%s"});
}

TEST(IntakeFormat, NamesAndValues) {
    const char* const names[] = {"JSON Bundle",  "Libtelemetry", "OSNDK",    "Specific Atom",
                                 "Generic Atom", "Nested Atom",  "HAL Atom", "Android Atom"};
    for (int value = 0; value < 8; ++value) {
        EXPECT_EQ(getFormatName(static_cast<IntakeFormat>(value)), names[value]);
        EXPECT_EQ(isFormatJsonBundle(static_cast<IntakeFormat>(value)), value < 3) << value;
    }
}

}  // namespace Velo::OS::Telemetry
