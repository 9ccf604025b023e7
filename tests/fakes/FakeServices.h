#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "telemetry/AppOverrideManager.h"
#include "telemetry/IIdentityManager.h"
#include "telemetry/IPackageInfoManager.h"
#include "telemetry/ISessionManager.h"
#include "telemetry/SequenceNumberManager.h"

namespace Velo::OS::Telemetry::fakes {

/// Everything that appliers ask. Answers from its members and keeps what it is asked, in order.
struct FakeServices : IIdentityManager, IPackageInfoManager, SequenceNumberManager, ISessionManager {
    std::string getUserIdForUid(uint32_t uid) override {
        calls.push_back("user id " + std::to_string(uid));
        return userId;
    }
    PackageInfo getPackageInfo(const std::string& name, uint32_t uid) override {
        calls.push_back("package " + name + " " + std::to_string(uid));
        return package;
    }
    PackageInfo getForegroundPackageInfo() override {
        calls.push_back("foreground");
        return foreground;
    }
    uint64_t getNextGlobalSequenceNumber(bool priority) override {
        calls.push_back(priority ? "global, priority" : "global");
        return global;
    }
    uint64_t getNextPerTypeSequenceNumber(const std::string& eventName) override {
        calls.push_back("number of " + eventName);
        return perType;
    }
    Json::Value getSessions(int32_t androidUser) override {
        calls.push_back("sessions " + std::to_string(androidUser));
        return sessions;
    }
    bool shouldAttachSessionsToAllEvents() override { return attachToAll; }
    std::string getSessionsV2(int64_t momentNs) override {
        calls.push_back("sessions at " + std::to_string(momentNs));
        return sessionsV2;
    }

    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;
    std::string userId, sessionsV2;
    PackageInfo package, foreground;
    uint64_t global = 0, perType = 0;
    Json::Value sessions;
    bool attachToAll = false;
};

/// Overrides of any key, asked about in the sight of the services. Keeps none by itself.
struct FakeOverrides : AppOverrideManager {
    explicit FakeOverrides(std::shared_ptr<FakeServices> owner) : services(std::move(owner)) {}
    std::optional<Json::Value> getOverrideForKey(uint32_t userId, int64_t appId, std::string key) override {
        services->calls.push_back("override " + std::to_string(userId) + " " + std::to_string(appId) + " " + key);
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }

    std::shared_ptr<FakeServices> services;
    std::map<std::string, Json::Value> values;
};

}  // namespace Velo::OS::Telemetry::fakes
