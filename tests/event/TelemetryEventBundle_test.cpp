#include "telemetry/TelemetryEventBundle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>

#include "tests/fakes/BundleOf.h"
#include "tests/fakes/Json.h"
#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using fakes::arrayOf;
using fakes::BundleOf;
using fakes::parsed;
using fakes::text;

TelemetryEventBundle jsonEvent(Json::Value data, IntakeFormat format = IntakeFormat::JsonBundle) {
    return TelemetryEventBundle("e", std::move(data), 1000, format);
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
    const Accessor accessors[] = {
        {"__sessions_v2", [](auto& e) { return e.sessionsV2(); }, R"("")", Accessor::Text},
        {"utl_logging_package", [](auto& e) { return e.loggingPackage(); }, R"("")", Accessor::Text},
        {"build_version", [](auto& e) { return e.osBuildNumber(); }, R"("")", Accessor::Text},
        {"sdk_app_package_version_name", [](auto& e) { return e.appVersion(); }, R"("")", Accessor::Text},
        {"utl_logging_pathway", [](auto& e) { return e.getLoggingPathway().value_or("none"); }, R"("none")",
         Accessor::Text},
        {"timestamp", [=](auto& e) { return number(e.time()); }, "0", Accessor::Number},
        {"utl_realtime_ms", [=](auto& e) { return number(e.clientCreatedTime()); }, "0", Accessor::Number},
        {"utl_app_id", [=](auto& e) { return number(e.appId()); }, "736366014426470", Accessor::Number},
        {"utl_eventTag", [=](auto& e) { return number(e.tags()); }, "0", Accessor::Number},
        {"applied_sample_rate", [=](auto& e) { return number(e.sampleRateAsPelko()); }, "1", Accessor::Number},
        {"realtime", [](auto& e) { return e.priority(); }, "false", Accessor::Flag},
        {"adjusted", [](auto& e) { return e.adjustedTime(); }, "false", Accessor::Flag},
    };
    const double twoTo63 = 9223372036854775808.0;
    const struct {
        Json::Value value;
        const char* as[3];  // text, number, flag; null: the default
    } values[] = {
        {Json::Value(), {}},
        {Json::Value(Json::arrayValue), {}},
        {parsed(R"({"a":1})"), {}},
        {Json::Value("5"), {R"("5")"}},
        {Json::Value(true), {nullptr, nullptr, "true"}},
        {Json::Value(5), {nullptr, "5"}},
        {Json::Value(-7.9), {nullptr, "-7"}},
        {Json::Value(Json::UInt64{INT64_MAX}), {nullptr, "9223372036854775807"}},
        {Json::Value(Json::UInt64{INT64_MAX} + 1), {}},
        {Json::Value(-twoTo63), {nullptr, "-9223372036854775808"}},
        {Json::Value(twoTo63), {}},
        {Json::Value(-1e30), {}},
        {Json::Value(std::nan("")), {}},
    };
    fakes::LogCapture unknownPathways;
    for (const Accessor& accessor : accessors) {
        for (const auto& v : values) {
            TelemetryEventBundle event = jsonEvent(Json::Value());
            event.addJson(accessor.key, Json::Value(v.value));
            const char* expected = v.as[accessor.accepts] ? v.as[accessor.accepts] : accessor.otherwise;
            EXPECT_EQ(text(accessor.read(event)), expected) << accessor.key << " " << text(v.value);
        }
        for (const char* data : {"null", "[1]", R"("text")"}) {
            EXPECT_EQ(text(accessor.read(jsonEvent(parsed(data)))), accessor.otherwise) << accessor.key << data;
        }
    }
    EXPECT_EQ(jsonEvent(parsed(R"({"utl_app_id":0})")).appId(), 736366014426470);
    EXPECT_EQ(jsonEvent(parsed(R"({"realtime":true})")).priority(), false) << "JSON events are never realtime";
    EXPECT_EQ(jsonEvent(Json::Value()).validateStr(Json::Value(5), "d"), "d");
}

TEST(TelemetryEventBundle, UserIdComesFromThePropertyOrTheMember) {
    const auto userId = [](const std::string& id) { return jsonEvent(parsed(R"({"id":)" + id + "}")).arvoUserId(); };
    EXPECT_EQ(userId(R"("0042")"), 42);
    EXPECT_EQ(userId(R"("9223372036854775807")"), INT64_MAX);
    EXPECT_EQ(userId("-5"), -5);
    for (const char* other : {R"("9223372036854775808")", R"("-5")", R"("")", "5.5", "18446744073709551615", "true"}) {
        EXPECT_EQ(userId(other), 0) << other;
    }
    EXPECT_EQ(jsonEvent(Json::Value()).arvoUserId(), 0);

    TelemetryEventBundle event = jsonEvent(parsed(R"({"id":5})"));
    event.addProperty("id", "-7 and more");
    EXPECT_EQ(event.arvoUserId(), -7);
    EXPECT_EQ(event.getArvoUserIdFromSorel(), 5);
    event.addProperty("id", "none");
    EXPECT_THROW(event.arvoUserId(), std::invalid_argument);

    EXPECT_EQ(event.consentState(), 0);
    event.addProperty("consent_state", "3");
    EXPECT_EQ(event.consentState(), 3);
    event.addProperty("consent_state", "99999999999999999999");
    EXPECT_THROW(event.consentState(), std::out_of_range);

    EXPECT_EQ(event.deviceId(), "");
    event.addProperty("morlek_device_id", "d");
    EXPECT_EQ(event.deviceId(), "d");
}

TEST(TelemetryEventBundle, ABundleAnswersForItselfUntilItIsConverted) {
    const BundleOf bundle =
        BundleOf().with("timestamp", int64_t{5}).with("adjusted", true).with("o", BundleOf().with("k", 1));
    TelemetryEventBundle event("e", 1000, true, bundle);
    event.addString("k", "v");
    event.addInt("timestamp", 6);
    EXPECT_EQ(text(event.getFromEventMetadata("k")), R"("v")");
    EXPECT_EQ(event.time(), 6) << "added values win";
    EXPECT_TRUE(event.adjustedTime());
    EXPECT_TRUE(event.priority());
    EXPECT_TRUE(event.getFromEventMetadata("o").isNull()) << "scalars only";
    event.getJsonValue();
    EXPECT_EQ(text(event.getFromEventMetadata("o")), R"({"k":1})");
    EXPECT_TRUE(event.adjustedTime());
    event.addJson("adjusted", Json::Value());
    EXPECT_FALSE(event.adjustedTime()) << "the bundle is not asked any more";

    TelemetryEventBundle unconvertible("e", 1000, false, arrayOf().with("timestamp", 5));
    unconvertible.getJsonValue();
    EXPECT_EQ(unconvertible.time(), 5) << "a bundle that was not converted is asked still";
}

TEST(TelemetryEventBundle, AKnownPathwayOverridesTheFormat) {
    fakes::LogCapture log;
    const auto pathway = [](const char* name) {
        return parsed(R"({"utl_logging_pathway":)" + std::string(name) + "}");
    };
    EXPECT_EQ(jsonEvent(pathway(R"("osndk")"), IntakeFormat::HalAtom).getIntakeFormat(), IntakeFormat::OsNdk);
    EXPECT_EQ(jsonEvent(pathway("5"), IntakeFormat::HalAtom).getIntakeFormat(), IntakeFormat::HalAtom);
    EXPECT_EQ(log.take().size(), 0U);
    EXPECT_EQ(jsonEvent(pathway(R"("other")"), IntakeFormat::HalAtom).getIntakeFormat(), IntakeFormat::HalAtom);
    EXPECT_EQ(log.take().size(), 1U);
    TelemetryEventBundle bundle("e", 1000, false, BundleOf().with("utl_logging_pathway", "libtelemetry"));
    EXPECT_EQ(bundle.getIntakeFormat(), IntakeFormat::Libtelemetry);
    EXPECT_EQ(TelemetryEventBundle("e", 1000, false).getIntakeFormat(), IntakeFormat::JsonBundle);
}

TEST(TelemetryEventBundle, TheInverseOfTheSampleRateIsStored) {
    const auto stored = [](float rate) {
        TelemetryEventBundle event("e", 1000, false);
        event.setSampleRate(rate);
        return event.getFromEventMetadata("applied_sample_rate").asUInt64();
    };
    EXPECT_EQ(stored(0.01F), 100U);
    EXPECT_EQ(stored(0.3F), 3U);
    EXPECT_EQ(stored(1.0F), 1U);
    for (const float rate : {2.0F, 0.0F, -0.5F, std::nanf("")}) EXPECT_EQ(stored(rate), 0U) << rate;
    for (const float rate : {1e-30F, 1e-45F}) EXPECT_EQ(stored(rate), UINT64_MAX) << rate;
    EXPECT_EQ(jsonEvent(parsed(R"({"applied_sample_rate":0})")).sampleRateAsPelko(), 0) << "not the default";

    struct : TelemetryEventBundle {
        using TelemetryEventBundle::TelemetryEventBundle;
        void addULong(const std::string& key, unsigned long value) override { seen = key + std::to_string(value); }
        std::string seen;
    } recording("e", 1000, false);
    recording.setSampleRate(0.5F);
    EXPECT_EQ(recording.seen, "applied_sample_rate2") << "stored through the virtual operation";
}

TEST(TelemetryEventBundle, MoveConstructionForgets) {
    TelemetryEventBundle source("perf", 7, true, BundleOf().with("marker_id", 9));
    source.addProperty("morlek_device_id", "d");
    source.setUid(8);
    EXPECT_EQ(source.getStringIdentifier(), "9");
    const TelemetryEventBundle moved(std::move(source));
    EXPECT_EQ(moved.name(), "perf");
    EXPECT_EQ(moved.uid(), 8U);
    EXPECT_EQ(moved.deviceId(), "");
    EXPECT_TRUE(moved.priority());
    EXPECT_EQ(moved.size(), 3U) << "unconverted again: the marker counts in the bundle and in the data";

    EXPECT_EQ(source.name(), "");  // NOLINT(bugprone-use-after-move): a moved-from event still answers
    EXPECT_EQ(source.time(), 0);
    source.addInt("k", 1);
    EXPECT_EQ(source.getJsonString(), R"({"k":1})");
}

TEST(TelemetryEventBundle, MoveAssignmentReplacesBundleAndDocumentAlone) {
    TelemetryEventBundle target("target", 7, false);
    target.addProperty("morlek_device_id", "d");
    EXPECT_EQ(target.getJsonString(), R"({"realtime":false})");
    target = TelemetryEventBundle("source", parsed(R"({"a":1})"), 9, IntakeFormat::HalAtom);
    EXPECT_EQ(target.name(), "source");
    EXPECT_EQ(target.uid(), 7U);
    EXPECT_EQ(target.deviceId(), "d");
    EXPECT_EQ(target.getIntakeFormat(), IntakeFormat::JsonBundle);
    EXPECT_EQ(target.getJsonString(), R"({"realtime":false})") << "the cached text stays";
    auto& self = target;
    target = std::move(self);
    EXPECT_EQ(target.name(), "source");
}

TEST(TelemetryEventBundle, EqualityIsThatOfBundleAndDocument) {
    TelemetryEventBundle event("e", 1, false, BundleOf().with("a", 1));
    TelemetryEventBundle same("e", 2, false, BundleOf().with("a", 1));
    same.addProperty("p", "q");
    EXPECT_TRUE(event == same);
    TelemetryEventBundle otherBundle("e", 1, false, BundleOf().with("a", 2));
    TelemetryEventBundle otherName("f", 1, false, BundleOf().with("a", 1));
    EXPECT_FALSE(event == otherBundle);
    EXPECT_FALSE(event == otherName);
}

}  // namespace Velo::OS::Telemetry
