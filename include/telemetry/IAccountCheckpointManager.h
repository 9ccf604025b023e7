#pragma once

#include <cstdint>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Knows the accounts that are held by a check. Injected by the service; called with the guard's lock held.
///
/// The service was compiled against these slots: the operation is entry 1, so the destructor is declared last.
class TELEMETRY_EXPORT IAccountCheckpointManager {
public:
    /// Whether nothing is to be logged for the account of the user for whom the uid runs.
    virtual bool isAccountCheckpointed(uint32_t uid) = 0;
    virtual ~IAccountCheckpointManager() = default;
};

}  // namespace Velo::OS::Telemetry
