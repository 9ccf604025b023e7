#pragma once

#include <array>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "telemetry/BundleToJson.h"
#include "telemetry/IAccountCheckpointManager.h"
#include "telemetry/IDynamicTelemetryManager.h"
#include "telemetry/IEventFilteringManager.h"
#include "telemetry/IRateLimiterConfigManager.h"
#include "tests/fakes/FakeStages.h"
#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry::fakes {

/// A report with these members as the callback keeps it, sent 4 s after boot and 5 s of sleep.
inline std::string report(uint32_t uid, const std::string& name, const std::string& members) {
    return std::to_string(uid) + " {\"" + name + "\":{" + members +
           ",\"utl_realtime_ms\":9000,\"utl_uptime_ms\":4000}}";
}

/// Everything that guards and monitors ask and tell. Answers from its members and keeps what it is asked and told, in
/// order.
class FakeGuardServices : public FakeManagers,
                          public IRateLimiterConfigManager,
                          public IAccountCheckpointManager,
                          public IDynamicTelemetryManager,
                          public IEventFilteringManager,
                          public IDiscretionaryAppBypass,
                          public IUserAccountState,
                          public IEventSchemaHandler {
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

    bool isFilterEnabled() override { return called("filters?"), filters; }
    bool hasUserConsent(uint32_t uid) override { return called("consent " + std::to_string(uid)), consents; }
    std::shared_ptr<IDiscretionaryAppBypass> getDiscretionaryAppBypass() override { return lent(); }
    bool isEventAllowed(const std::string& identifier, uint32_t uid, const std::string& package, bool consent,
                        bool flag) override {
        called("allowed " + identifier + " " + std::to_string(uid) + " " + package + " " + digits({consent, flag}));
        ++judged;
        return refused.count(identifier) == 0;
    }
    bool isEventAllowedIfFilterEnabled(const std::string& identifier, bool consent, bool parvi, bool dataUse,
                                       bool flag) override {
        return called("if filtered " + identifier + " " + digits({consent, parvi, dataUse, flag})), allowsIfFiltered;
    }
    std::shared_ptr<IEventSchemaHandler> getEventSchemaHandler() override { return lent(); }
    std::shared_ptr<IUserAccountState> getUserAccountState() override { return lent(); }
    bool isBypassedForDiscretionaryApp(const std::string& package, uint32_t uid) override {
        return called("bypassed " + package + " " + std::to_string(uid)), facts[0];
    }
    bool isParviAccount(uint32_t uid) override { return called("parvi " + std::to_string(uid)), facts[1]; }
    bool hasDataUseConsent(uint32_t uid) override { return called("data use " + std::to_string(uid)), facts[2]; }
    bool isPersonalizationPurposeOnly(const std::string& name) override { return called("purpose " + name), facts[3]; }
    bool isAdsPersonalizationPurposeOnly(const std::string& name) override { return called("ads " + name), facts[4]; }
    uint64_t getEventSchemaTimestamp() override { return called("timestamp"), schemaTimestamp; }
    EventCategory getEventCategory(const std::string& name) override {
        return called("category " + name), EventCategory::NeedsReview;
    }
    bool persistEventSchema(const std::string& /*schema*/) override { return false; }
    void overrideEventCategory(const std::string& /*name*/, EventCategory /*category*/) override {}
    bool isEventSchemaAvailable() override { return false; }

    /// Keeps each report as "UID {"NAME":{...}}", then fails if it is to.
    MonitorEventCallback callback() {
        return [this](const android::os::PersistableBundle& envelope, bool flag, unsigned int uid) {
            called(std::to_string(uid) + (flag ? " flag " : " ") + textOf(envelope));
            if (reportsFail) throw std::runtime_error("no reports");
        };
    }

    RateLimitConfig rateLimit;
    std::set<uint32_t> checkpointed;
    std::set<std::string> unwanted, refused;
    float sampleRate = 1;
    std::string configId;
    PerformanceLogs logs;
    std::vector<ConfigFetchLog> fetches;
    bool filters = true, consents = true, allowsIfFiltered = true;
    std::array<bool, 5> facts{};  // bypass, account, data use and both purposes
    uint64_t schemaTimestamp = 0;
    int judged = 0;  // by the filter, whose lock is to guard it
    bool reportsFail = false;

private:
    std::shared_ptr<FakeGuardServices> lent() { return {std::shared_ptr<void>(), this}; }
    static std::string digits(std::initializer_list<bool> values) {
        std::string text;
        for (const bool value : values) text += value ? '1' : '0';
        return text;
    }
    static std::string textOf(android::os::PersistableBundle envelope) {
        android::os::PersistableBundle body;
        for (const auto& name : envelope.getPersistableBundleKeys()) envelope.getPersistableBundle(name, &body);
        Json::Value json;
        if (!convertBundleToJson(envelope, json)) return "no report";
        std::string report = text(json);
        for (const auto& key : body.getIntKeys()) report += " int " + std::string(android::String8(key).c_str());
        return report;
    }
};

}  // namespace Velo::OS::Telemetry::fakes
