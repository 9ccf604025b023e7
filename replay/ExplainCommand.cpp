#include "replay/ExplainCommand.h"

#include <cstdlib>
#include <utility>

#include "replay/DeskDevice.h"
#include "replay/Interruption.h"
#include "replay/LibraryLog.h"
#include "replay/Replay.h"
#include "replay/RunEnd.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// Colours are for people who have not asked to be spared them (no-color.org).
bool wantsColour(const OutputFile& output) {
    const char* noColour = std::getenv("NO_COLOR");
    return output.isTerminal() && (!noColour || *noColour == '\0');
}

ExitStatus explainFiles(RunFiles& files, const ExplainOptions& options, Console& console) {
    using Format = Explainer::Format;
    DeskDevice device(files, std::nullopt, console);
    files.emptyOutputs();
    if (files.isTyped()) sayHowTypingEnds(console);
    const Format textFormat = wantsColour(files.output) ? Format::ColouredText : Format::Text;
    Explainer explainer(options.choice, files.output, options.json ? Format::Json : textFormat);
    Replay::Options replayOptions;
    replayOptions.onlyFollowed = true;
    replayOptions.follow = [&](const auto&... event) { return explainer.follow(event..., device.pipeline().stages()); };
    replayOptions.observers = {[&](const Observation& observation) { explainer.explain(observation); }};
    replayOptions.concerns = [&](const LinePlace& place) { return explainer.concerns(place); };
    replayOptions.isDone = [&](const LinePlace& place, bool isInLastFile) {
        return explainer.isDone(place, isInLastFile);
    };
    Replay replay(files, device.pipeline(), console, std::move(replayOptions));
    expectInterruption();
    const bool hasRun = runOnConsole(replay, console);
    const bool isClosed = console.attempt([&] { files.output.close(); });
    if (isClosed) sayWhereItEnded(replay, hasRun, files, console);
    if (!hasRun || !isClosed) return ExitStatus::Unusable;
    if (interruption() != 0) return statusOfInterruption();
    // An event that comes after the end of the run may yet have the name.
    const std::string missing = replay.isComplete() ? explainer.missingNames() : "";
    if (explainer.explained() == 0) {
        console.error("none of the events was chosen" + missing);
    } else if (!missing.empty()) {
        console.warning(missing.substr(2));
    }
    return explainer.explained() > 0 && replay.counts().bad == 0 ? ExitStatus::Success : ExitStatus::BadInput;
}

}  // namespace

ExitStatus explainCommand(const ExplainOptions& options) {
    Console console(/*quiet=*/false);
    const LibraryLog libraryLog(console);
    ExitStatus status = ExitStatus::Unusable;
    console.attempt([&] {
        RunFiles files = openRunFiles(options.run);
        status = explainFiles(files, options, console);
    });
    return status;
}

}  // namespace Velo::OS::Telemetry::replay
