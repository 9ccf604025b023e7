#pragma once

#include "replay/ExitStatus.h"

namespace Velo::OS::Telemetry::replay {

/// From now on the first SIGINT or SIGTERM asks for an orderly end instead of ending the process; the second ends it.
void expectInterruption();

/// The signal that has asked for an end, 0 if none has. For any thread.
int interruption();
/// What the process then tells its caller.
ExitStatus statusOfInterruption();

/// Waits until the file can be read, or until an end is asked for: then it is false. Throws nothing; a file that cannot
/// be waited for counts as one that can be read.
bool waitUntilReadable(int file);

/// Whether reading from the file would not have to wait.
bool isReadable(int file);

}  // namespace Velo::OS::Telemetry::replay
