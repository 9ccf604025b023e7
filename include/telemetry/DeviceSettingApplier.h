#pragma once

#include <memory>

#include "telemetry/IApplier.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

/// "device_setting_applier": adds "managed_mode", the settings' own number, and "account_mode", 1 with an account and
/// -1 without, as they were for the event's user when it was created.
class TELEMETRY_EXPORT DeviceSettingApplier : public IApplier {
public:
    DeviceSettingApplier();

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;
    /// The settings that are asked, for test doubles to replace.
    virtual std::shared_ptr<ITelemetrySettingsManager> getSettings() const;
};

}  // namespace Velo::OS::Telemetry
