#include "replay/RunCommand.h"

#include <algorithm>
#include <chrono>
#include <ostream>
#include <streambuf>
#include <utility>

#include "platform/tracing/HostTracing.h"
#include "replay/Console.h"
#include "replay/DeskDevice.h"
#include "replay/FileError.h"
#include "replay/Interruption.h"
#include "replay/LibraryLog.h"
#include "replay/Replay.h"
#include "replay/RunFiles.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// Lets a stream write to a file of the run.
class FileStreamBuffer : public std::streambuf {
public:
    explicit FileStreamBuffer(OutputFile& file) : file_(file) {}

private:
    int_type overflow(int_type character) override {
        const char byte = traits_type::to_char_type(character);
        if (!traits_type::eq_int_type(character, traits_type::eof())) file_.write({&byte, 1});
        return traits_type::not_eof(character);
    }

    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        file_.write({bytes, static_cast<size_t>(count)});
        return count;
    }

    OutputFile& file_;
};

void writeTrace(OutputFile& file) {
    FileStreamBuffer buffer(file);
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);  // lets a `FileError` through
    if (!host::writeTrace(stream)) throw FileError("cannot write " + file.name());
}

bool closeAllButTrace(RunFiles& files, Console& console) {
    bool closed = true;
    for (OutputFile* file : files.outputs()) {
        const bool isTrace = files.trace && file == &*files.trace;
        if (!isTrace) closed &= console.attempt([&] { file->close(); });
    }
    return closed;
}

bool finishTrace(RunFiles& files, Console& console) {
    if (!files.trace) return true;
    host::stopTracing();
    if (!host::isTraceComplete()) console.warning(files.trace->name() + " lacks some slices");
    return console.attempt([&] {
        writeTrace(*files.trace);
        files.trace->close();
    });
}

/// Not where it would mix with what someone is typing.
void showStatus(const RunFiles& files, Console& console) {
    const auto isTerminal = [](const InputFile& input) { return input.isTerminal(); };
    if (std::any_of(files.inputs.begin(), files.inputs.end(), isTerminal)) return;
    console.showStatus(files.output.isTerminal() ? Console::Status::WhenWaiting : Console::Status::Always,
                       files.inputBytes());
}

ExitStatus replayFiles(RunFiles& files, const RunOptions& options, Console& console) {
    DeskDevice device(files, options.store, console);
    DevicePipeline& pipeline = device.pipeline();
    files.emptyOutputs();
    Replay::Options replayOptions;
    replayOptions.threads = options.threads;
    replayOptions.stopsAtBadLine = options.strict;
    Replay replay(files, pipeline, console, std::move(replayOptions));
    showStatus(files, console);
    if (files.trace) host::startTracing();

    const auto start = std::chrono::steady_clock::now();
    bool usable = console.attempt([&] { replay.run(); });
    console.hideStatus();
    usable &= closeAllButTrace(files, console);
    usable &= console.attempt([&] { device.handBackSequenceNumbers(); });
    const auto elapsed = std::chrono::steady_clock::now() - start;
    usable &= finishTrace(files, console);

    console.summary(replay.counts(), elapsed);
    console.table("dropped by", pipeline.drops());
    console.table("counters", {pipeline.counters().begin(), pipeline.counters().end()});
    if (!usable) return ExitStatus::Unusable;
    if (interruption() != 0) return statusOfInterruption();
    return replay.counts().bad > 0 ? ExitStatus::BadInput : ExitStatus::Success;
}

}  // namespace

ExitStatus runCommand(const RunOptions& options) {
    expectInterruption();
    Console console(options.quiet);
    const LibraryLog libraryLog(console);
    ExitStatus status = ExitStatus::Unusable;
    console.attempt([&] {
        RunFiles files = openRunFiles(options);
        status = replayFiles(files, options, console);
    });
    return status;
}

}  // namespace Velo::OS::Telemetry::replay
