#pragma once

#include <cstdint>
#include <string_view>

namespace Velo::OS::Telemetry::fuzz {

inline std::string_view textOf(const uint8_t* data, size_t size) {
    return size == 0 ? std::string_view() : std::string_view(reinterpret_cast<const char*>(data), size);
}

/// The text up to the mark, or all of it; `rest` is left with what follows the mark.
inline std::string_view takeUntil(char mark, std::string_view& rest) {
    const size_t end = rest.find(mark);
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return taken;
}

}  // namespace Velo::OS::Telemetry::fuzz
