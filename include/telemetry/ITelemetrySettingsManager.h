#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// The device's telemetry settings, supplied by the settings library and called from any thread.
///
/// That library was compiled against these slots; the two destructors are entries 1 and 2, and entries that this
/// library does not call are reserved in their places.
class TELEMETRY_EXPORT ITelemetrySettingsManager {
public:
    virtual ~ITelemetrySettingsManager() = default;
    virtual void reserved3() {}
    virtual bool isTelemetryEnabled() = 0;
    /// Ids of the device; none if it has none yet.
    virtual std::optional<std::string> getTelemetryDeviceId() = 0;
    virtual std::optional<std::string> getMorlekDeviceId() = 0;
    /// The mode in which the device was managed at the moment, and whether it had an account then. The moment is in ns
    /// since boot, deep sleep included; the user is an Android user's id.
    virtual int32_t getManagedMode(int64_t momentNs, std::optional<int32_t> userId) = 0;
    virtual bool getAccountMode(int64_t momentNs, std::optional<int32_t> userId) = 0;
    virtual void reserved9() {}
    virtual void reserved10() {}
    virtual bool isVerboseEnabled() = 0;
    virtual void reserved12() {}
    virtual void reserved13() {}
    virtual void reserved14() {}
    virtual void reserved15() {}
    /// Whether event timestamps are taken from the wall clock. Persisted.
    virtual bool isClockAdjusted() = 0;
    virtual void setClockAdjusted(bool adjusted) = 0;
    /// Whether the logging backend has shifted the timestamps of the events it cached. Persisted.
    virtual bool isEventCacheTimeAdjusted() = 0;
    virtual void setEventCacheTimeAdjusted(bool adjusted) = 0;
    /// Wall-clock minus monotonic milliseconds at the moment of adjustment. Persisted.
    virtual int64_t getClockAdjustmentMs() = 0;
    virtual void setClockAdjustmentMs(int64_t adjustmentMs) = 0;
    virtual void reserved22() {}
    virtual void reserved23() {}
    /// Whether the feature gate of that name is on.
    virtual bool isGkEnabled(const std::string& gateName) = 0;
    virtual void reserved25() {}
    virtual void reserved26() {}
    virtual void reserved27() {}
    virtual void reserved28() {}
    virtual void reserved29() {}
    /// Whether events of this name are being verified at the moment.
    virtual bool isEventInVerification(const std::string& eventName) = 0;
};

}  // namespace Velo::OS::Telemetry
