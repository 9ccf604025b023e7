#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/settings/HostTelemetrySettings.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry::fakes {

/// Answers from its members and keeps what it is told, and what it is asked of users and events, in order.
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
        return called("getManagedMode " + std::to_string(momentNs), userId.value_or(-1)), managedMode;
    }
    bool getAccountMode(int64_t momentNs, std::optional<int32_t> userId) override {
        return called("getAccountMode " + std::to_string(momentNs), userId.value_or(-1)), accountMode;
    }
    bool isVerboseEnabled() override { return verbose; }
    bool isClockAdjusted() override { return clockAdjusted; }
    void setClockAdjusted(bool adjusted) override { called("setClockAdjusted", adjusted); }
    bool isEventCacheTimeAdjusted() override { return eventCacheAdjusted; }
    void setEventCacheTimeAdjusted(bool adjusted) override { called("setEventCacheTimeAdjusted", adjusted); }
    int64_t getClockAdjustmentMs() override { return clockAdjustmentMs; }
    void setClockAdjustmentMs(int64_t adjustmentMs) override { called("setClockAdjustmentMs", adjustmentMs); }
    bool isGkEnabled(const std::string& gateName) override { return gateName == openGate; }
    bool isEventInVerification(const std::string& eventName) override {
        return called("isEventInVerification " + eventName, 0), inVerification;
    }

    std::optional<std::string> telemetryDeviceId, morlekDeviceId;
    std::string openGate;
    int32_t managedMode = 0;
    int64_t clockAdjustmentMs = 0;
    bool accountMode = false, enabled = true, verbose = false, inVerification = false;
    bool clockAdjusted = false, eventCacheAdjusted = false;

private:
    void called(const std::string& call, int64_t with) { calls_.push_back(call + " " + std::to_string(with)); }

    std::vector<std::string> calls_;
};

/// A clock or stage that asks settings of its own.
template <typename Base>
struct WithOwnSettings : Base {
    using Base::Base;
    std::shared_ptr<ITelemetrySettingsManager> getSettings() const override { return ++asked, own; }

    std::shared_ptr<FakeTelemetrySettings> own = std::make_shared<FakeTelemetrySettings>();
    mutable int asked = 0;
};

}  // namespace Velo::OS::Telemetry::fakes
