#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Knows who uses the device. Injected by the service, which was compiled against this slot (the two destructors are
/// entries 1 and 2); called from every thread that processes events.
class TELEMETRY_EXPORT IIdentityManager {
public:
    virtual ~IIdentityManager() = default;
    /// The id of the user for whom the uid runs, a signed 64-bit integer in decimal digits; empty if unknown.
    virtual std::string getUserIdForUid(uint32_t uid) = 0;
};

}  // namespace Velo::OS::Telemetry
