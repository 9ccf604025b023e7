#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/settings/HostTelemetrySettings.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry::fakes {

/// Answers from its members and keeps what it is asked and told, in order.
class FakeTelemetrySettings : public ITelemetrySettingsManager {
public:
    /// Makes it the process's settings.
    static std::shared_ptr<FakeTelemetrySettings> install() {
        auto settings = std::make_shared<FakeTelemetrySettings>();
        host::setTelemetrySettings(settings);
        return settings;
    }

    std::vector<std::string> takeCalls() { return std::exchange(calls_, {}); }

    bool isTelemetryEnabled() override { return enabled; }
    std::optional<std::string> getTelemetryDeviceId() override { return telemetryDeviceId; }
    std::optional<std::string> getMorlekDeviceId() override { return morlekDeviceId; }
    int32_t getManagedMode(int64_t momentNs, std::optional<int32_t> userId) override {
        return answer("getManagedMode", momentNs, userId.value_or(-1), managedMode);
    }
    bool getAccountMode(int64_t momentNs, std::optional<int32_t> userId) override {
        return answer("getAccountMode", momentNs, userId.value_or(-1), accountMode);
    }
    bool isVerboseEnabled() override { return verbose; }
    bool isClockAdjusted() override { return clockAdjusted; }
    void setClockAdjusted(bool adjusted) override { calls_.push_back(adjusted ? "adjusted" : "not adjusted"); }
    bool isEventCacheTimeAdjusted() override { return eventCacheAdjusted; }
    void setEventCacheTimeAdjusted(bool adjusted) override {
        calls_.push_back(adjusted ? "event cache adjusted" : "event cache not adjusted");
    }
    int64_t getClockAdjustmentMs() override { return clockAdjustmentMs; }
    void setClockAdjustmentMs(int64_t adjustmentMs) override {
        calls_.push_back("adjustment " + std::to_string(adjustmentMs));
    }
    bool isGkEnabled(const std::string& /*gateName*/) override { return gatesOpen; }
    bool isEventInVerification(const std::string& /*eventName*/) override { return inVerification; }

    std::optional<std::string> telemetryDeviceId, morlekDeviceId;
    int32_t managedMode = 0;
    int64_t clockAdjustmentMs = 0;
    bool accountMode = false, enabled = true, verbose = false, gatesOpen = false, inVerification = false;
    bool clockAdjusted = false, eventCacheAdjusted = false;

private:
    template <typename Answer>
    Answer answer(const std::string& operation, int64_t momentNs, int32_t userId, Answer answer) {
        calls_.push_back(operation + " " + std::to_string(momentNs) + " " + std::to_string(userId));
        return answer;
    }

    std::vector<std::string> calls_;
};

/// A clock or stage that asks settings of its own.
template <typename Base>
struct WithOwnSettings : Base {
    std::shared_ptr<ITelemetrySettingsManager> getSettings() const override {
        ++asked;
        return own;
    }

    std::shared_ptr<FakeTelemetrySettings> own = std::make_shared<FakeTelemetrySettings>();
    mutable int asked = 0;
};

}  // namespace Velo::OS::Telemetry::fakes
