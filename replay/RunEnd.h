#pragma once

#include "replay/Console.h"
#include "replay/Replay.h"
#include "replay/RunFiles.h"

namespace Velo::OS::Telemetry::replay {

/// Says to someone who is going to type the events how to end them.
void sayHowTypingEnds(Console& console);

/// Runs it, and says what it throws; false if it does.
bool runOnConsole(Replay& replay, Console& console);

/// To be called once the files of events are closed. Says after which line the run ended if it was interrupted, or
/// could not go on: a file can be read again from there, and a pipe may have brought more, which nobody can. Says
/// nothing if not all that it wrote is in its files.
void sayWhereItEnded(const Replay& replay, bool hasRun, const RunFiles& files, Console& console);

}  // namespace Velo::OS::Telemetry::replay
