#pragma once

#include <memory>
#include <string>

#include "telemetry/IApplier.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

/// "device_id_applier": sets the property "morlek_device_id".
///
/// Deliberate: each id is asked for once in a process and kept, even if the settings have none yet; it is empty then.
class TELEMETRY_EXPORT DeviceIDApplier : public IApplier {
public:
    DeviceIDApplier();

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;
    virtual std::string getTelemetryDeviceId();
    virtual std::string getMorlekDeviceId();
    /// The settings that are asked, for test doubles to replace.
    virtual std::shared_ptr<ITelemetrySettingsManager> getSettings() const;
};

}  // namespace Velo::OS::Telemetry
