#include <gtest/gtest.h>

#include "telemetry/TelemetryEventBundle.h"
#include "tests/fakes/BundleOf.h"
#include "tests/fakes/Json.h"
#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using fakes::BundleOf;
using fakes::parsed;
using Lines = std::vector<std::string>;

const Lines kNoCampaign = {"6 TelemetryService: ondemand's campaign_id is not found."};
const Lines kNoPayload = {"6 TelemetryService: Perf payload's json format is invalid. perf_payload_json not found."};
const Lines kBadPayload = {"6 TelemetryService: Perf payload's json format is invalid."};
const Lines kNoMarker = {"5 TelemetryService: KLX event's marker_id is not found."};

TEST(StringIdentifier, IsTheNameOrANumberOfThePayload) {
    const std::string tooDeep = R"({"perf_payload_json":")" + std::string(1001, '[') + "\"}";
    const struct {
        const char* event;
        const char* data;
        const char* expected;
        Lines log = {};
    } cases[] = {
        {"app_launch", R"({"campaign_id":4,"marker_id":5})", "app_launch"},
        {"perfs", R"({"marker_id":5})", "perfs"},
        {"", "{}", ""},

        {"ondemand_statsd_utl", R"({"campaign_id":42})", "odt_42"},
        {"ondemand_statsd_utl", R"({"campaign_id":-7.9})", "odt_-7"},
        {"ondemand_statsd_utl", R"({"campaign_id":-1})", "ondemand_statsd_utl", kNoCampaign},
        {"ondemand_statsd_utl", R"({"campaign_id":"42"})", "ondemand_statsd_utl", kNoCampaign},
        {"ondemand_statsd_utl", R"({"campaign_id":9223372036854775808})", "ondemand_statsd_utl", kNoCampaign},
        {"ondemand_statsd_utl", "[42]", "ondemand_statsd_utl", kNoCampaign},
        {"ondemand_statsd_utl", "{}", "ondemand_statsd_utl", kNoCampaign},

        {"perf", R"({"marker_id":7,"perf_payload_json":"{"})", "7"},
        {"perf", R"({"marker_id":7,"perf_payload_json":"{\"marker_id\":8}"})", "7"},
        {"perf", R"({"marker_id":null,"perf_payload_json":"{\"marker_id\":8}"})", "perf", kNoMarker},
        {"perf", R"({"marker_id":"7"})", "perf", kNoMarker},
        {"perf", R"({"marker_id":-1})", "perf", kNoMarker},
        {"perf_utl", R"({"perf_payload_json":"{\"marker_id\":12}"})", "12"},
        {"perf_utl", R"({"perf_payload_json":"{\"marker_id\":1e30}"})", "perf_utl", kNoMarker},
        {"perf_utl", R"({"perf_payload_json":"{\"marker\":12}"})", "perf_utl", kBadPayload},
        {"perf_utl", R"({"perf_payload_json":"[12]"})", "perf_utl", kBadPayload},
        {"perf_utl", R"({"perf_payload_json":"{"})", "perf_utl", kBadPayload},
        {"perf_utl", R"({"perf_payload_json":{"marker_id":12}})", "perf_utl", kBadPayload},
        {"perf_utl", tooDeep.c_str(), "perf_utl", kBadPayload},
        {"perf_utl", "{}", "perf_utl", kNoPayload},
        {"perf_utl", "[]", "perf_utl", kNoPayload},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.event) + " " + c.data);
        TelemetryEventBundle event(c.event, parsed(c.data), 1000, IntakeFormat::JsonBundle);
        fakes::LogCapture log;
        EXPECT_EQ(event.getStringIdentifier(), c.expected);
        EXPECT_EQ(log.take(), c.log);
        EXPECT_EQ(event.getStringIdentifier(), c.expected);
        EXPECT_EQ(log.take(), Lines()) << "computed once";
    }
}

TEST(StringIdentifier, ReadsBundlesAndSurvivesEveryChange) {
    TelemetryEventBundle event("perf", 1000, false, BundleOf().with("marker_id", 9));
    EXPECT_EQ(event.getStringIdentifier(), "9");
    event.addInt("marker_id", 10);
    TelemetryEventBundle other("app_launch", 1000, false);
    event = std::move(other);
    EXPECT_EQ(event.name(), "app_launch");
    EXPECT_EQ(event.getStringIdentifier(), "9");
}

TEST(StringIdentifier, ExportedNames) {
    EXPECT_STREQ(kKlxEventName, "perf");
    EXPECT_STREQ(kLegacyKlxEventName, "perf_utl");
    EXPECT_STREQ(kOnDemandPrefix, "odt_");
}

}  // namespace Velo::OS::Telemetry
