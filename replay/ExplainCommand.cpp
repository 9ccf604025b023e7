#include "replay/ExplainCommand.h"

#include <cstdlib>

#include "replay/DeskDevice.h"
#include "replay/FileError.h"
#include "replay/LibraryLog.h"
#include "replay/Replay.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// Colours are for people who have not asked to be spared them (no-color.org).
bool wantsColour(const OutputFile& output) {
    const char* noColour = std::getenv("NO_COLOR");
    return output.isTerminal() && (!noColour || *noColour == '\0');
}

}  // namespace

ExitStatus explainCommand(const ExplainOptions& options) {
    using Format = Explainer::Format;
    Console console(/*quiet=*/false);
    const LibraryLog libraryLog(console);
    try {
        RunFiles files = openRunFiles(options.run);
        DeskDevice device(files, std::nullopt, console);
        files.emptyOutputs();
        const Format textFormat = wantsColour(files.output) ? Format::ColouredText : Format::Text;
        Explainer explainer(options.choice, files.output, options.json ? Format::Json : textFormat);
        Replay replay(files, device.pipeline(), console, Replay::BadLines::Continue, &explainer);
        replay.run();
        files.output.close();
        if (explainer.explained() == 0) console.error("none of the events was chosen");
        const bool isGood = explainer.explained() > 0 && replay.counts().bad == 0;
        return isGood ? ExitStatus::Success : ExitStatus::BadInput;
    } catch (const FileError& error) {
        console.error(error.what());
        return ExitStatus::Unusable;
    }
}

}  // namespace Velo::OS::Telemetry::replay
