#pragma once

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Has the logging backend shift the timestamps of the events that it cached before the clock was adjusted, until that
/// has succeeded once in the life of the device.
class TELEMETRY_EXPORT EventCacheState {
public:
    /// Runs `adjustTimeIfNeeded`.
    EventCacheState();

    /// Asks the backend to shift its events by the persisted adjustment, unless the settings say that it has done so.
    void adjustTimeIfNeeded();

    /// What the backend is to call when it has succeeded: records in the settings that it need not be asked again.
    void (*adjustTimeSuccessCallback())();
};

}  // namespace Velo::OS::Telemetry
