#pragma once

#include "replay/ExitStatus.h"
#include "replay/RunOptions.h"

namespace Velo::OS::Telemetry::replay {

/// `telemetry-replay run`. Says on standard error what went wrong.
ExitStatus runCommand(const RunOptions& options);

}  // namespace Velo::OS::Telemetry::replay
