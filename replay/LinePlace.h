#pragma once

#include <cstdint>
#include <string>

namespace Velo::OS::Telemetry::replay {

/// A line of the input.
struct LinePlace {
    std::string file;   // as it is shown: the path, or "<stdin>"
    uint64_t line = 0;  // from 1
};

inline std::string toText(const LinePlace& place) { return place.file + ":" + std::to_string(place.line); }

}  // namespace Velo::OS::Telemetry::replay
