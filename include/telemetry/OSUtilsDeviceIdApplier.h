#pragma once

#include <string>

#include "telemetry/IApplier.h"

namespace Velo::OS::Telemetry {

/// "osutils_device_id_applier": adds "device_serial".
class TELEMETRY_EXPORT OSUtilsDeviceIdApplier : public IApplier {
public:
    OSUtilsDeviceIdApplier();

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

    /// System properties, read once in a process; "Unknown" if not set.
    static const std::string& getDeviceSerialNumber();
    static const std::string& getDeviceModelExtended();
};

}  // namespace Velo::OS::Telemetry
