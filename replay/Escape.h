#pragma once

#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// The text as it may be shown on a terminal: control characters (C0, DEL and C1) become \n, \t, \r or \u001b and the
/// like, characters that cannot be seen or that change the direction of the text (U+200B to U+200F, U+2028 to U+202E,
/// U+2060 to U+2069, U+FEFF) \u202e and the like, and bytes that are no UTF-8 \x80 and the like. Everything else stays
/// as it is.
std::string escaped(std::string_view text);

}  // namespace Velo::OS::Telemetry::replay
