#pragma once

#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "telemetry/BundleToJson.h"
#include "telemetry/IAccountCheckpointManager.h"
#include "telemetry/IDynamicTelemetryManager.h"
#include "telemetry/IRateLimiterConfigManager.h"
#include "tests/fakes/FakeStages.h"
#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry::fakes {

/// Everything that guards ask and tell. Answers from its members and keeps what it is asked and told, in order.
class FakeGuardServices : public FakeManagers,
                          public IRateLimiterConfigManager,
                          public IAccountCheckpointManager,
                          public IDynamicTelemetryManager {
public:
    FakeGuardServices() : FakeManagers(std::make_shared<std::vector<std::string>>()) {}

    RateLimitConfig getRateLimitConfig(const std::string& identifier) override {
        return called("limit of " + identifier), rateLimit;
    }
    bool isAccountCheckpointed(uint32_t uid) override {
        return called("checkpointed " + std::to_string(uid)), checkpointed.count(uid) > 0;
    }
    DynamicTelemetryDecision evaluateEvent(const TelemetryEvent& event) override {
        called("evaluate " + event.name());
        return {unwanted.count(event.name()) == 0, sampleRate};
    }
    std::string getActiveConfigId(uint32_t userId) override {
        return called("config of " + std::to_string(userId)), configId;
    }
    PerformanceLogs takePerformanceLogs() override { return called("logs"), std::exchange(logs, {}); }
    std::vector<ConfigFetchLog> takeConfigFetchLogs() override { return called("fetches"), std::exchange(fetches, {}); }

    /// Keeps each report as "UID {"NAME":{...}}", then fails if it is to.
    MonitorEventCallback callback() {
        return [this](const android::os::PersistableBundle& envelope, bool flag, unsigned int uid) {
            called(std::to_string(uid) + (flag ? " flag " : " ") + textOf(envelope));
            if (reportsFail) throw std::runtime_error("no reports");
        };
    }

    RateLimitConfig rateLimit;
    std::set<uint32_t> checkpointed;
    std::set<std::string> unwanted;
    float sampleRate = 1;
    std::string configId;
    PerformanceLogs logs;
    std::vector<ConfigFetchLog> fetches;
    bool reportsFail = false;

private:
    static std::string textOf(android::os::PersistableBundle envelope) {
        android::os::PersistableBundle body;
        for (const auto& name : envelope.getPersistableBundleKeys()) envelope.getPersistableBundle(name, &body);
        Json::Value json;
        if (!convertBundleToJson(envelope, json) || !body.getIntKeys().empty()) return "no report";
        return text(json);
    }
};

}  // namespace Velo::OS::Telemetry::fakes
