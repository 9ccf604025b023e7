#pragma once

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
struct FakeServices : IIdentityManager,
                      IPackageInfoManager,
                      SequenceNumberManager,
                      ISessionManager,
                      AppOverrideManager {
    std::string getUserIdForUid(uint32_t uid) override { return asked("user id", uid), userId; }
    PackageInfo getPackageInfo(const std::string& name, uint32_t uid) override { return asked(name, uid), package; }
    PackageInfo getForegroundPackageInfo() override { return asked("foreground", 0), foreground; }
    uint64_t getNextGlobalSequenceNumber(bool priority) override { return asked("global", priority), global; }
    uint64_t getNextPerTypeSequenceNumber(const std::string& name) override { return asked(name, 0), perType; }
    Json::Value getSessions(int32_t user) override { return asked("sessions", user), sessions; }
    bool shouldAttachSessionsToAllEvents() override { return attachToAll; }
    std::string getSessionsV2(int64_t momentNs) override { return asked("sessions at", momentNs), sessionsV2; }
    std::optional<Json::Value> getOverrideForKey(uint32_t uid, int64_t appId, std::string key) override {
        asked("override " + key + " " + std::to_string(uid), appId);
        const auto found = overrides.find(key);
        return found == overrides.end() ? std::nullopt : std::optional(found->second);
    }

    void asked(const std::string& what, int64_t about) { calls.push_back(what + " " + std::to_string(about)); }
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;
    std::string userId, sessionsV2;
    PackageInfo package, foreground;
    uint64_t global = 0, perType = 0;
    Json::Value sessions;
    bool attachToAll = false;
    std::map<std::string, Json::Value> overrides;  // of any key, whoever asks
};

}  // namespace Velo::OS::Telemetry::fakes
