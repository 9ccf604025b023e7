#pragma once

#include "replay/ExitStatus.h"

namespace Velo::OS::Telemetry::replay {

/// Does what the arguments, as `main` has them, ask for. What is wrong with a call goes to standard error.
ExitStatus runCommandLine(int argc, const char* const* argv);

}  // namespace Velo::OS::Telemetry::replay
