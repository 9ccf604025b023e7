#pragma once

#include <functional>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry::host {

/// Sets what the logging backend does when it is asked to shift cached events by so many milliseconds. The handler's
/// answer says whether the shift succeeded and the success callback is called. Without a handler nothing succeeds.
/// To be set before events are processed.
TELEMETRY_EXPORT void setAdjustTimeHandler(std::function<bool(long)> handler);

}  // namespace Velo::OS::Telemetry::host
