#pragma once

#include <cstdint>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Knows the account of the user for whom a uid runs. Provided by the service; called with the guard's lock held.
///
/// The service was compiled against these slots: the operations are entries 2 and 3, the entry that this library does
/// not call is reserved in its place, and the destructor is declared last.
class TELEMETRY_EXPORT IUserAccountState {
public:
    virtual void reserved1() {}
    virtual bool isParviAccount(uint32_t uid) = 0;
    virtual bool hasDataUseConsent(uint32_t uid) = 0;
    virtual ~IUserAccountState() = default;
};

}  // namespace Velo::OS::Telemetry
