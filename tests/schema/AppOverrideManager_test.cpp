#include "telemetry/AppOverrideManager.h"

#include <gtest/gtest.h>

namespace Velo::OS::Telemetry {

using Overrides = std::vector<std::pair<std::string, Json::Value>>;

constexpr char kName[] = "sdk_app_package_version_name";
constexpr char kCode[] = "sdk_app_package_version_code";

TEST(AppOverrideManager, TakesTheKeysOfEachTypeOnly) {
    AppOverrideManager manager;
    for (const char* key : {kCode, "sdk_app_package", ""}) manager.setAppOverrideStr(key, "5", 10, 7);
    for (const char* key : {kName, "id", ""}) manager.setAppOverrideInt(key, 5, 10, 7);
    EXPECT_EQ(manager.getAllOverrides(10, 7), Overrides());

    manager.setAppOverrideInt(kCode, 1, 10, 7);
    manager.setAppOverrideInt(kCode, 1LL << 40, 10, 7);
    manager.setAppOverrideStr(kName, "1.0", 10, 7);
    manager.setAppOverrideStr(kName, "2.0", 10, 7);
    manager.setAppOverrideStr("id", "x", 10, 7);
    EXPECT_EQ(manager.getAllOverrides(10, 7),
              (Overrides{{"id", "x"}, {kName, "2.0"}, {kCode, Json::Int64{1LL << 40}}}));
    EXPECT_EQ(manager.getOverrideForKey(10, 7, kCode), Json::Value(Json::Int64{1LL << 40}));
    EXPECT_EQ(manager.getOverrideForKey(10, 7, "id"), Json::Value("x"));
    EXPECT_EQ(manager.getOverrideForKey(10, 7, "other"), std::nullopt);
}

TEST(AppOverrideManager, KeepsUsersAndAppsApart) {
    AppOverrideManager manager;
    manager.setAppOverrideStr("id", "x", 10, 7);
    manager.setAppOverrideInt(kCode, 5, 10, 8);
    manager.setAppOverrideStr("id", "x", 10, 0);
    manager.setAppOverrideInt(kCode, 5, 10, 0);
    const struct {
        uint32_t user;
        int64_t app;
        Overrides expected;
    } cases[] = {{10, 7, {{"id", "x"}}}, {10, 8, {{kCode, 5}}}, {10, 0, {}}, {11, 7, {}}, {10, -7, {}}, {7, 10, {}}};
    for (const auto& c : cases) {
        EXPECT_EQ(manager.getAllOverrides(c.user, c.app), c.expected) << c.user << " " << c.app;
        EXPECT_EQ(manager.getOverrideForKey(c.user, c.app, "id").has_value(), c.app == 7 && c.user == 10);
    }
}

}  // namespace Velo::OS::Telemetry
