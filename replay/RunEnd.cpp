#include "replay/RunEnd.h"

#include <csignal>
#include <string>

#include "replay/Interruption.h"

namespace Velo::OS::Telemetry::replay {

void sayHowTypingEnds(Console& console) { console.note("reading events from standard input; Ctrl-D ends it"); }

bool runOnConsole(Replay& replay, Console& console) {
    const bool hasRun = console.attempt([&] { replay.run(); });
    console.hideStatus();
    if (interruption() == SIGINT) console.endLine();
    return hasRun;
}

void sayWhereItEnded(const Replay& replay, bool hasRun, const RunFiles& files, Console& console) {
    if (replay.isComplete() || (hasRun && interruption() == 0) || files.hasFailedOutput()) return;
    const std::string how = hasRun ? "interrupted" : "the run ended";
    const LinePlace& place = replay.lastPlace();
    place.line > 0 ? console.error(place, how + " after this line") : console.error(how + " before the first line");
}

}  // namespace Velo::OS::Telemetry::replay
