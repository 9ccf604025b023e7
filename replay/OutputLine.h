#pragma once

#include <string>

#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry::replay {

/// Replaces `line` by what the event has become, as one line with its newline:
/// {"name":...,"uid":...,"identifier":...,"data":...,"header":...}
/// False, and `line` is unspecified, if the event cannot be converted to JSON.
[[nodiscard]] bool writeOutputLine(TelemetryEvent& event, std::string& line);

}  // namespace Velo::OS::Telemetry::replay
