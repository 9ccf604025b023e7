#pragma once

#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// The text as it may be shown on a terminal: control characters (C0, DEL and C1) become \n, \t, \r or \u001b and the
/// like, and bytes that are no UTF-8 become \x80 and the like. Everything else stays as it is.
std::string escaped(std::string_view text);

}  // namespace Velo::OS::Telemetry::replay
