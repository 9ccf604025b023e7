#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Owns the counters that number events: where they start, how long they last and how they wrap. Injected by the
/// service, which was compiled against these slots (the two destructors are entries 1 and 2). Called from every thread
/// that processes events, so drawing a number must be atomic.
class TELEMETRY_EXPORT SequenceNumberManager {
public:
    virtual ~SequenceNumberManager() = default;
    /// `priority`: whether the event is to be delivered at once.
    virtual uint64_t getNextGlobalSequenceNumber(bool priority) = 0;
    /// Drawn after the global one; another thread may draw between the two.
    virtual uint64_t getNextPerTypeSequenceNumber(const std::string& eventName) = 0;
};

}  // namespace Velo::OS::Telemetry
