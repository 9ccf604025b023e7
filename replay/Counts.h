#pragma once

#include <cstdint>

namespace Velo::OS::Telemetry::replay {

/// What became of the events. Every event read or reported is kept, dropped or bad.
struct Counts {
    uint64_t read = 0;
    uint64_t reported = 0;  // monitor events that were logged as events of their own
    uint64_t kept = 0;
    uint64_t dropped = 0;  // by a guard
    uint64_t bad = 0;      // lines that are no event, or one that cannot be converted
    uint64_t bytes = 0;    // of input
};

}  // namespace Velo::OS::Telemetry::replay
