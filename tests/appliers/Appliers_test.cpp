#include <android-base/properties.h>
#include <gtest/gtest.h>

#include <tuple>

#include "appliers/SessionExemptEvents.h"
#include "telemetry/ApplicationInfoApplier.h"
#include "telemetry/DeviceIDApplier.h"
#include "telemetry/DeviceInfoApplier.h"
#include "telemetry/DeviceSettingApplier.h"
#include "telemetry/IdentityApplier.h"
#include "telemetry/OSUtilsDeviceIdApplier.h"
#include "telemetry/PackageInfoApplier.h"
#include "telemetry/SequenceNumberApplier.h"
#include "telemetry/SessionsApplier.h"
#include "telemetry/SystemPropertyApplier.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TimestampApplier.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeStages.h"
#include "tests/fakes/FakeTelemetrySettings.h"
#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry {

using Lines = std::vector<std::string>;

class Appliers : public testing::Test {
protected:
    /// What the applier adds to an event that has the members of `data`.
    std::string added(IApplier& applier, const std::string& data = "{}", uint32_t uid = 1010123,
                      const std::string& name = "e") {
        const Json::Value before = fakes::parsed(data);
        auto event = std::make_unique<TelemetryEventBundle>(name, before, uid, IntakeFormat::JsonBundle);
        const TelemetryEvent* given = event.get();
        const std::unique_ptr<TelemetryEvent> after = applier.apply(std::move(event)).takeValue();
        EXPECT_EQ(after.get(), given);
        header = after->getJsonBatchHeaderString();
        Json::Value members = after->getJsonValue();
        members.removeMember("realtime");
        for (const std::string& key : before.getMemberNames()) {
            if (members[key] == before[key]) members.removeMember(key);
        }
        return fakes::text(members);
    }

    /// The batch header's property under the key, null if there is none, after the last `added`.
    std::string property(const char* key) { return fakes::text(fakes::parsed(header)[key]); }

    std::shared_ptr<fakes::FakeTelemetrySettings> settings = fakes::FakeTelemetrySettings::install();
    std::shared_ptr<fakes::FakeServices> services = std::make_shared<fakes::FakeServices>();
    std::string header;
};

TEST_F(Appliers, DeviceIdsAreKeptFromTheirFirstUse) {
    fakes::WithOwnSettings<DeviceIDApplier> first;
    first.own->morlekDeviceId = "m1";
    first.own->telemetryDeviceId = "t1";
    EXPECT_EQ(added(first), "{}");
    EXPECT_EQ(first.getTelemetryDeviceId(), "t1");

    DeviceIDApplier second;  // the process's settings have no ids
    EXPECT_EQ(second.name_, "device_id_applier");
    added(second);
    EXPECT_EQ(property("morlek_device_id"), "\"m1\"");
    EXPECT_EQ(second.getTelemetryDeviceId(), "t1");
}

TEST_F(Appliers, MissingDeviceIdsStayMissing) {
    DeviceIDApplier applier;
    for (int i = 0; i < 2; ++i) {
        added(applier);
        EXPECT_EQ(property("morlek_device_id"), "\"\"");
        EXPECT_EQ(applier.getTelemetryDeviceId(), "");
        settings->telemetryDeviceId = settings->morlekDeviceId = "late";
    }
}

TEST_F(Appliers, SystemPropertiesAreKeptFromTheirFirstUse) {
    OSUtilsDeviceIdApplier applier;
    EXPECT_EQ(applier.name_, "osutils_device_id_applier");
    android::base::SetProperty("ro.vendor.product.model_extended", "Model 2");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(added(applier), R"({"device_serial":"Unknown"})");
        EXPECT_EQ(OSUtilsDeviceIdApplier::getDeviceModelExtended(), "Model 2");
        android::base::SetProperty("ro.serialno", "late");
        android::base::SetProperty("ro.vendor.product.model_extended", "late");
    }
    SystemPropertyApplier passing;
    EXPECT_EQ(passing.name_, "system_property_applier");
    EXPECT_EQ(added(passing), "{}");
}

TEST_F(Appliers, ModesAreAskedForTheUserAndTheMomentOfCreation) {
    fakes::WithOwnSettings<DeviceSettingApplier> applier;
    EXPECT_EQ(applier.name_, "device_setting_applier");
    applier.own->managedMode = -3;
    EXPECT_EQ(added(applier, R"({"utl_realtime_ms":4294967297})"), R"({"account_mode":-1,"managed_mode":-3})");
    EXPECT_EQ(applier.own->takeCalls(),
              (Lines{"getManagedMode 4294967297000000 10", "getAccountMode 4294967297000000 10"}));
    applier.own->accountMode = true;
    EXPECT_EQ(added(applier, R"({"utl_realtime_ms":9223372036854775807})", 10123),
              R"({"account_mode":1,"managed_mode":-3})");
    EXPECT_EQ(applier.own->takeCalls(), (Lines{"getManagedMode -1000000 0", "getAccountMode -1000000 0"})) << "wraps";
}

TEST_F(Appliers, CompositesPassOnTheFirstErrorAndTheLastResult) {
    const auto calls = std::make_shared<Lines>();
    const auto composite = [&](const Lines& inner) {
        const auto stage = [&](size_t i) { return std::make_unique<fakes::FakeApplier>(calls, inner[i]); };
        return std::make_unique<DeviceInfoApplier>(stage(0), stage(1), stage(2), stage(3));
    };
    const auto apply = [](IApplier& applier) {
        return applier.apply(std::make_unique<TelemetryEventBundle>("e", 1U, false));
    };
    const std::tuple<Lines, Lines, EventResult::State> cases[] = {
        {{"1", "2", "3", "4"}, {"run 1", "run 2", "run 3", "run 4"}, EventResult::State::Value},
        {{"1", "2!", "3", "4"}, {"run 1", "run 2!"}, EventResult::State::Error},
        {{"1", "2", "3", "4!"}, {"run 1", "run 2", "run 3", "run 4!"}, EventResult::State::Error},
        {{"1", "2", "3", "4?"}, {"run 1", "run 2", "run 3", "run 4?"}, EventResult::State::Empty},
    };
    for (const auto& [inner, expected, state] : cases) {
        ApplicationInfoApplier wrapped(composite(inner), services);
        EXPECT_EQ(wrapped.name_, "application_info_applier");
        const EventResult result = apply(wrapped);
        EXPECT_EQ(std::exchange(*calls, {}), expected);
        EXPECT_EQ(result.state(), state);
        EXPECT_EQ(result.error(), result.hasError() ? fakes::kFakeError : std::error_code());
    }
    const auto broken = composite({"1", "2", "3?", "4"});
    EXPECT_EQ(broken->name_, "device_info_applier");
    EXPECT_DEATH(apply(*broken).state(), "TelemetryService F .*requireValue:1066 PANIC");
}

TEST_F(Appliers, TheUserIdIsTheOverrideElseTheManagersElseZero) {
    const std::tuple<const char*, Json::Value, const char*> cases[] = {
        {"7", Json::nullValue, "\"7\""},
        {"", Json::nullValue, "\"0\""},
        {"7", "123", "\"123\""},
        {"", "abc", "\"abc\""},
        {"7", "", "\"0\""},
        {"7", std::string("1\0002", 3), "\"1\""},
        {"7", 5, "\"7\""},
    };
    IdentityApplier applier(services, services);
    EXPECT_EQ(applier.name_, "identity_applier");
    for (const auto& [managers, override, expected] : cases) {
        services->userId = managers;
        services->overrides.clear();
        if (!override.isNull()) services->overrides["id"] = override;
        EXPECT_EQ(added(applier, R"({"utl_app_id":23})"), "{}");
        EXPECT_EQ(property("id"), expected);
        EXPECT_EQ(services->takeCalls(), (Lines{"user id 1010123", "override id 1010123 23"}));
    }
    added(applier, R"({"id":42})");
    EXPECT_EQ(property("id"), "null");
    EXPECT_EQ(services->takeCalls(), Lines{}) << "nobody is asked about an event that has an id";
}

TEST_F(Appliers, PackagesAreTheManagersUnlessOverridden) {
    services->package = {"com.a", -(1LL << 40), "1.2"};
    services->foreground = {"com.f", 9, "9.9"};
    const auto expected = [](const std::string& code, const std::string& name) {
        return R"({"fg_app_package_name":"com.f","fg_app_package_version":"9.9","sdk_app_package":"com.a",)"
               R"("sdk_app_package_version_code":)" +
               code + R"(,"sdk_app_package_version_name":)" + name + "}";
    };
    const std::string data = R"({"utl_logging_package":"com.logger","utl_app_id":23})";
    PackageInfoApplier withoutOverrides(services);
    EXPECT_EQ(added(withoutOverrides, data), expected("-1099511627776", R"("1.2")"));
    EXPECT_EQ(services->takeCalls(), (Lines{"com.logger 1010123", "foreground 0"}));

    services->overrides = {{"sdk_app_package_version_name", Json::arrayValue}, {"sdk_app_package_version_code", "5"}};
    PackageInfoApplier applier(services, services);
    EXPECT_EQ(applier.name_, "package_info_applier");
    EXPECT_EQ(added(applier, data), expected(R"("5")", "[]"));
    EXPECT_EQ(services->takeCalls(), (Lines{"com.logger 1010123", "override sdk_app_package_version_name 1010123 23",
                                            "override sdk_app_package_version_code 1010123 23", "foreground 0"}));
}

TEST_F(Appliers, BothSequenceNumbersAreDrawnOnceTheGlobalOneFirst) {
    services->global = ~uint64_t{0};
    services->perType = ~uint64_t{0} - 1;
    SequenceNumberApplier applier(services);
    EXPECT_EQ(applier.name_, "seq_num_applier");
    EXPECT_EQ(added(applier),
              R"({"global_sequence_number":18446744073709551615,"per_type_sequence_number":18446744073709551614})");
    EXPECT_TRUE(applier.apply(std::make_unique<TelemetryEventBundle>("p", 1U, true)).hasValue());
    EXPECT_EQ(services->calls, (Lines{"global 0", "e 0", "global 1", "p 0"}));
}

TEST_F(Appliers, SessionsGoToEveryEventOrToTheExemptOnes) {
    const std::string exempt = "arvo_pairing_completed";
    const Json::Value legacy = fakes::parsed(R"({"s":1})");
    const std::tuple<std::string, bool, Json::Value, const char*, const char*> cases[] = {
        {"other", false, legacy, R"({"utl_realtime_ms":7})", R"({"__sessions_v2":"now"})"},
        {"other", true, legacy, "{}", R"({"__sessions":{"s":1},"__sessions_v2":"now"})"},
        {exempt, false, legacy, "{}", R"({"__sessions":{"s":1},"__sessions_v2":"now"})"},
        {exempt, true, Json::nullValue, "{}", R"({"__sessions_v2":"now"})"},
        {exempt, false, Json::objectValue, R"({"__sessions_v2":"own"})", R"({"__sessions":{}})"},
        {"other", false, legacy, R"({"__sessions_v2":""})", R"({"__sessions_v2":"now"})"},
    };
    services->sessionsV2 = "now";
    SessionsApplier applier(services);
    EXPECT_EQ(applier.name_, "sessions_applier");
    for (const auto& [name, attachToAll, sessions, data, expected] : cases) {
        services->attachToAll = attachToAll;
        services->sessions = sessions;
        EXPECT_EQ(added(applier, data, 1010123, name), expected);
        Lines calls = {"sessions at " + std::to_string(fakes::parsed(data)["utl_realtime_ms"].asInt64() * 1'000'000)};
        if (attachToAll || name == exempt) calls.emplace_back("sessions 10");
        EXPECT_EQ(services->takeCalls(), calls);
    }
    uint64_t checksum = 0;  // one letter of the list changed, and an event loses its sessions without a trace
    for (const std::string_view name : kSessionExemptEvents) {
        for (const char c : std::string(name) + ' ') checksum = 31 * checksum + static_cast<unsigned char>(c);
    }
    EXPECT_EQ(checksum, 0xf02d5c2d513e2b06U);
}

TEST_F(Appliers, TheTimestampIsNowLessTheAgeButNeverBelowZero) {
    struct FakeClock : AdjustedClock {
        AdjustedTimestamp getTimestamp() const override { return now; }
        AdjustedTimestamp now{};
    };
    const auto clock = std::make_shared<FakeClock>();
    TimestampApplier applier(clock);
    EXPECT_EQ(applier.name_, "timestamp_applier");
    const std::tuple<AdjustedTimestamp, int64_t, const char*> cases[] = {
        {{false, 10000, 20000}, 15000, R"({"adjusted":false,"timestamp":5000})"},
        {{true, 4999, 20000}, 15000, R"({"adjusted":true,"timestamp":0})"},
        {{true, 1790000000000, 20000}, 20000, R"({"adjusted":true,"timestamp":1790000000000})"},
        {{true, 1790000000000, 20000}, 20001, R"({"adjusted":true,"timestamp":0})"},
        {{false, 10000, 20000}, -1, R"({"adjusted":false,"timestamp":0})"},
        {{true, ~uint64_t{0}, 20000}, 20000, R"({"adjusted":true,"timestamp":18446744073709551615})"},
        {{true, ~uint64_t{0}, 0}, INT64_MIN, R"({"adjusted":true,"timestamp":9223372036854775807})"},
        {{false, 0, ~uint64_t{0}}, -1, R"({"adjusted":false,"timestamp":0})"},
        {{false, 7, ~uint64_t{0}}, INT64_MAX, R"({"adjusted":false,"timestamp":0})"},
    };
    for (const auto& [now, createdMs, expected] : cases) {
        clock->now = now;
        EXPECT_EQ(added(applier, R"({"utl_realtime_ms":)" + std::to_string(createdMs) + "}"), expected);
    }
}

}  // namespace Velo::OS::Telemetry
