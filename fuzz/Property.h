#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Velo::OS::Telemetry::fuzz {

/// Ends the run with a crash unless the property holds, and prints which one it is and what it was to hold of.
inline void require(bool holds, const char* property, const std::string& detail = {}) {
    if (holds) return;
    std::fprintf(stderr, "\nProperty that does not hold: %s\n%s\n", property, detail.c_str());
    std::abort();
}

inline void requireEqual(const std::string& seen, const std::string& expected, const char* property) {
    if (seen == expected) return;
    require(false, property, "seen:     " + seen + "\nexpected: " + expected);
}

}  // namespace Velo::OS::Telemetry::fuzz
