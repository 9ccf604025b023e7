#pragma once

#include "replay/Device.h"
#include "telemetry/IAccountCheckpointManager.h"
#include "telemetry/IDiscretionaryAppBypass.h"
#include "telemetry/IIdentityManager.h"
#include "telemetry/IPackageInfoManager.h"
#include "telemetry/IRateLimiterConfigManager.h"
#include "telemetry/ISessionManager.h"
#include "telemetry/ITelemetrySettingsManager.h"
#include "telemetry/IUserAccountState.h"
#include "telemetry/TelemetrySorelconfigs.h"

namespace Velo::OS::Telemetry::replay {

/// Answers what the library asks of its service, from the description of a device. It persists nothing: replaying
/// events changes no settings.
class DeviceServices : public ITelemetrySettingsManager,
                       public IIdentityManager,
                       public IPackageInfoManager,
                       public ISessionManager,
                       public IRateLimiterConfigManager,
                       public IAccountCheckpointManager,
                       public IDiscretionaryAppBypass,
                       public IUserAccountState {
public:
    explicit DeviceServices(Device device) : device_(std::move(device)) {}

    const Device& device() const { return device_; }
    /// Telemetry is as enabled as it was at this moment, in ms since boot.
    void setMoment(int64_t momentMs) { momentMs_ = momentMs; }

    bool isTelemetryEnabled() override;
    std::optional<std::string> getTelemetryDeviceId() override { return device_.telemetryId; }
    std::optional<std::string> getMorlekDeviceId() override { return device_.morlekId; }
    /// Users whose modes are not known have those of a fresh `Device::User`.
    int32_t getManagedMode(int64_t momentNs, std::optional<int32_t> userId) override;
    bool getAccountMode(int64_t momentNs, std::optional<int32_t> userId) override;
    bool isVerboseEnabled() override { return false; }
    bool isClockAdjusted() override { return device_.clock.adjusted; }
    void setClockAdjusted(bool /*adjusted*/) override {}
    bool isEventCacheTimeAdjusted() override { return true; }
    void setEventCacheTimeAdjusted(bool /*adjusted*/) override {}
    int64_t getClockAdjustmentMs() override { return 0; }
    void setClockAdjustmentMs(int64_t /*adjustmentMs*/) override {}
    bool isGkEnabled(const std::string& gateName) override {
        return gateName == TelemetrySorelconfigs::EnableIntakeMonitor && device_.intakeGate;
    }
    bool isEventInVerification(const std::string& eventName) override {
        return device_.eventsInVerification.count(eventName) > 0;
    }

    std::string getUserIdForUid(uint32_t uid) override;

    /// A package that is not known has the name by which it is asked for, version code 0 and no version name.
    PackageInfo getPackageInfo(const std::string& packageName, uint32_t uid) override;
    PackageInfo getForegroundPackageInfo() override { return device_.foreground; }

    Json::Value getSessions(int32_t userId) override;
    bool shouldAttachSessionsToAllEvents() override { return device_.sessions.attachToAllEvents; }
    /// Empty before the first context.
    std::string getSessionsV2(int64_t momentNs) override;

    RateLimitConfig getRateLimitConfig(const std::string& eventIdentifier) override;

    bool isAccountCheckpointed(uint32_t uid) override { return device_.checkpointedUids.count(uid) > 0; }

    /// Whether the user for whom the uid runs has consented to what is not essential.
    bool hasConsent(uint32_t uid) const { return userOf(uid).consent; }
    bool isParviAccount(uint32_t uid) override { return userOf(uid).parviAccount; }
    bool hasDataUseConsent(uint32_t uid) override { return userOf(uid).dataUseConsent; }
    bool isBypassedForDiscretionaryApp(const std::string& loggingPackage, uint32_t /*uid*/) override {
        return device_.filter.discretionaryPackages.count(loggingPackage) > 0;
    }

private:
    Device::User userOf(uint32_t uid) const;
    Device::User user(std::optional<int32_t> userId) const;

    const Device device_;
    int64_t momentMs_ = 0;
};

}  // namespace Velo::OS::Telemetry::replay
