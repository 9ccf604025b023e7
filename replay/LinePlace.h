#pragma once

#include <cstdint>
#include <string>

namespace Velo::OS::Telemetry::replay {

/// A line of the input.
struct LinePlace {
    std::string file;   // as it is shown: the path, or "<stdin>"
    uint64_t line = 0;  // from 1
};

}  // namespace Velo::OS::Telemetry::replay
