#pragma once

#include <cutils/multiuser.h>

#include <cstdint>

#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// When the event was created, in ns since boot. A time beyond the range wraps.
inline int64_t creationTimeNs(const TelemetryEvent& event) {
    return static_cast<int64_t>(static_cast<uint64_t>(event.clientCreatedTime()) * 1'000'000U);
}

/// The Android user for whom the application that logged the event runs.
inline int32_t androidUserId(const TelemetryEvent& event) {
    return static_cast<int32_t>(multiuser_get_user_id(event.uid()));
}

}  // namespace Velo::OS::Telemetry
