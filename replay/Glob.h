#pragma once

#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// Whether the pattern fits all of the text: "*" stands for any characters, also none, "?" for any one; there is no
/// escape. Both are UTF-8. Takes no longer than the product of the lengths, whatever the pattern.
bool matchesGlob(std::string_view pattern, std::string_view text);

}  // namespace Velo::OS::Telemetry::replay
