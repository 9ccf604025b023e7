#pragma once

#include <set>
#include <string>

#include "replay/ExitStatus.h"
#include "replay/RunOptions.h"

namespace Velo::OS::Telemetry::replay {

/// `run --print-config`: writes to standard output what a run with these options would go by, one value a line: its
/// name, the value, and where it comes from: "command line", "FILE:LINE" of the device's description, or "default".
/// Option by option, then all that can be said of a device, by the paths that errors use, as compact JSON. Opens no
/// file but the description.
/// `given` are the long names of the options that the command line has.
ExitStatus printConfigCommand(const RunOptions& options, const std::set<std::string>& given);

}  // namespace Velo::OS::Telemetry::replay
