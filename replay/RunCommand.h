#pragma once

#include "replay/RunOptions.h"

namespace Velo::OS::Telemetry::replay {

/// What the process tells its caller.
enum class ExitStatus : int {
    Success = 0,
    BadInput = 1,  // at least one line was bad
    Unusable = 2,  // a wrong call, or a file that cannot be opened, read or written
};

/// `telemetry-replay run`. Says on standard error what went wrong.
ExitStatus runCommand(const RunOptions& options);

}  // namespace Velo::OS::Telemetry::replay
