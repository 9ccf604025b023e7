#pragma once

namespace Velo::OS::Telemetry::replay {

/// What the process tells its caller.
enum class ExitStatus : int {
    Success = 0,
    BadInput = 1,       // something in the input was bad: a line, a member of a schema
    Unusable = 2,       // a wrong call, an unusable file, too little memory, or expectations that were not checked
    Interrupted = 130,  // by SIGINT, in good order
    Terminated = 143,   // by SIGTERM, in good order
};

}  // namespace Velo::OS::Telemetry::replay
