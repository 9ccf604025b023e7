#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"
#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// Keeps named counters about the telemetry service itself. Injected by the service; called from every thread that
/// processes events, guards that have a lock calling with it held.
///
/// The service was compiled against these slots; the two destructors are entries 1 and 2, and entries that this library
/// does not call are reserved in their places.
class TELEMETRY_EXPORT IHealthCountersManager {
public:
    virtual ~IHealthCountersManager() = default;
    virtual void reserved3() {}
    virtual void incrementCounter(const std::string& counterName, int32_t amount) = 0;
    /// The event is lent for the call.
    virtual void incrementEventCounter(const std::string& counterName, const TelemetryEvent& event, int32_t amount) = 0;
};

}  // namespace Velo::OS::Telemetry
