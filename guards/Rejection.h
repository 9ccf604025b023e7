#pragma once

#include <cerrno>
#include <string>
#include <system_error>

#include "telemetry/EventResult.h"
#include "telemetry/IHealthCountersManager.h"

namespace Velo::OS::Telemetry {

/// What every guard returns for an event that it drops.
inline std::error_code rejection() { return {EINVAL, std::generic_category()}; }

/// Counts the event as dropped, and drops it.
inline EventResult reject(const TelemetryEvent& event, const std::string& counter,
                          IHealthCountersManager& healthCounters) {
    healthCounters.incrementEventCounter(counter, event, 1);
    return rejection();
}

}  // namespace Velo::OS::Telemetry
