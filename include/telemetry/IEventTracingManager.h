#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Is told which stages an event enters. Injected by the service; called from every thread that processes events.
///
/// The service was compiled against these slots; the two destructors are entries 1 and 2, and entries that this library
/// does not call are reserved in their places.
class TELEMETRY_EXPORT IEventTracingManager {
public:
    virtual ~IEventTracingManager() = default;
    virtual void reserved3() {}
    virtual void reserved4() {}
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    /// Before the stage runs; whether it then drops the event is not told.
    virtual void traceEventStage(const std::string& eventIdentifier, uint32_t uid, const std::string& stageName) = 0;
};

}  // namespace Velo::OS::Telemetry
