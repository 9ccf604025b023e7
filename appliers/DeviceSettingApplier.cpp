#include "telemetry/DeviceSettingApplier.h"

#include "appliers/EventOrigin.h"
#include "conversion/Immortal.h"
#include "telemetry/TelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kManagedMode = immortal<std::string>("managed_mode");
const std::string& kAccountMode = immortal<std::string>("account_mode");

}  // namespace

DeviceSettingApplier::DeviceSettingApplier() : IApplier("device_setting_applier") {}

EventResult DeviceSettingApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    const int64_t createdNs = creationTimeNs(*event);
    const int32_t userId = androidUserId(*event);
    event->addInt(kManagedMode, getSettings()->getManagedMode(createdNs, userId));
    // Deliberate: without an account it is -1 and not 0.
    event->addInt(kAccountMode, getSettings()->getAccountMode(createdNs, userId) ? 1 : -1);
    return event;
}

std::shared_ptr<ITelemetrySettingsManager> DeviceSettingApplier::getSettings() const {
    return TelemetrySettingsManager::instance();
}

}  // namespace Velo::OS::Telemetry
