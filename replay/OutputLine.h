#pragma once

#include <string>

#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry::replay {

/// Adds what the event has become to the text, as one line with its newline:
/// {"name":...,"uid":...,"identifier":...,"data":...,"header":...}
/// False, and the text is as it was, if the event cannot be converted to JSON.
[[nodiscard]] bool appendOutputLine(TelemetryEvent& event, std::string& text);

}  // namespace Velo::OS::Telemetry::replay
