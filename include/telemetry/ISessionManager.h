#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Knows the sessions in which the device is used. Injected by the service; called from every thread that processes
/// events.
///
/// The service was compiled against these slots; the two destructors are entries 1 and 2, and entries that this library
/// does not call are reserved in their places.
class TELEMETRY_EXPORT ISessionManager {
public:
    virtual ~ISessionManager() = default;
    virtual void reserved3() {}
    virtual void reserved4() {}
    /// The legacy session context of the Android user; null if there is none.
    virtual Json::Value getSessions(int32_t userId) = 0;
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    virtual void reserved9() {}
    virtual void reserved10() {}
    virtual void reserved11() {}
    /// Whether every event gets the legacy context, and not only those that need it always.
    virtual bool shouldAttachSessionsToAllEvents() = 0;
    virtual void reserved13() {}
    /// The session context at the moment, in nanoseconds on the clock of creation times.
    virtual std::string getSessionsV2(int64_t momentNs) = 0;
};

}  // namespace Velo::OS::Telemetry
