#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Knows the applications whose events are exempt from filtering. Provided by the service; called with the guard's lock
/// held.
///
/// The service was compiled against these slots: the operation is entry 3, entries that this library does not call are
/// reserved in their places, and the destructor is declared last.
class TELEMETRY_EXPORT IDiscretionaryAppBypass {
public:
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual bool isBypassedForDiscretionaryApp(const std::string& loggingPackage, uint32_t uid) = 0;
    virtual ~IDiscretionaryAppBypass() = default;
};

}  // namespace Velo::OS::Telemetry
