#include "replay/RunCommand.h"

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "platform/tracing/HostTracing.h"
#include "replay/Console.h"
#include "replay/DeskDevice.h"
#include "replay/Expectations.h"
#include "replay/FileError.h"
#include "replay/Interruption.h"
#include "replay/JourneyStart.h"
#include "replay/LibraryLog.h"
#include "replay/Replay.h"
#include "replay/RunEnd.h"
#include "replay/RunFiles.h"
#include "replay/RunReport.h"

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
        return file_.hasFailed() ? traits_type::eof() : traits_type::not_eof(character);
    }

    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        file_.write({bytes, static_cast<size_t>(count)});
        return file_.hasFailed() ? 0 : count;
    }

    OutputFile& file_;
};

void writeTrace(OutputFile& file) {
    FileStreamBuffer buffer(file);
    std::ostream stream(&buffer);
    const bool isWritten = host::writeTrace(stream);
    file.close();
    if (!isWritten) throw FileError("cannot write " + file.name());
}

/// Those who look at all of a run, beside the files that it writes.
struct Watchers {
    std::optional<Expectations> expectations;
    std::optional<RunReport> report;
    JourneyStart journeyStart;
};

Replay::Options replayOptions(const RunOptions& options, DevicePipeline& pipeline, Watchers& watchers) {
    Replay::Options replay;
    replay.threads = options.threads;
    replay.stopsAtBadLine = options.strict;
    if (watchers.expectations) {
        replay.observers.emplace_back([&](const Observation& event) { watchers.expectations->observe(event); });
    }
    if (watchers.report) {
        pipeline.timeStages();
        replay.observers.emplace_back([&](const Observation& event) { watchers.report->observe(event); });
        replay.follow = [&, left = options.reportEvents](const LinePlace& place, bool isReport,
                                                         const TelemetryEvent& event, std::string_view line) mutable {
            if (isReport || left == 0) return std::unique_ptr<Journey>();
            --left;
            return watchers.journeyStart.begin(place, isReport, event, line, pipeline.stages());
        };
    }
    return replay;
}

/// Not where it would mix with what someone is typing, or with output behind a pipe.
void showStatus(const RunFiles& files, Console& console) {
    if (files.isTyped()) return sayHowTypingEnds(console);
    if (files.output.isPipe()) return;
    console.showStatus(files.output.isTerminal() ? Console::Status::WhenWaiting : Console::Status::Always,
                       files.inputBytes());
}

/// Those of events: the others are not written yet.
bool closeEventFiles(RunFiles& files, Console& console) {
    bool closed = console.attempt([&] { files.output.close(); });
    for (std::optional<OutputFile>* file : {&files.rejects, &files.drops, &files.monitorEvents}) {
        if (*file) closed &= console.attempt([&] { (*file)->close(); });
    }
    return closed;
}

bool finishReport(const RunReport& report, RunFacts facts, RunFiles& files, const DevicePipeline& pipeline,
                  Console& console) {
    for (const InputFile& input : files.inputs) facts.inputs.push_back(input.name());
    facts.drops = pipeline.drops();
    facts.counters = pipeline.counters();
    facts.stageTimes = pipeline.stageTimes();
    facts.clock = pipeline.clock();
    return console.attempt([&] {
        report.write(*files.report, facts);
        files.report->close();
    });
}

bool finishTrace(RunFiles& files, Console& console) {
    if (!files.trace) return true;
    host::stopTracing();
    if (!host::isTraceComplete()) console.warning(files.trace->name() + " lacks some slices");
    return console.attempt([&] { writeTrace(*files.trace); });
}

/// Says what does not hold. Returns the status of the run, which that may change.
ExitStatus checkExpectations(const Expectations& expectations, const Replay& replay, ExitStatus status,
                             Console& console) {
    if (!replay.isComplete()) {
        console.error("expectations not checked: the run has not come to its end");
        return status == ExitStatus::Success ? ExitStatus::Unusable : status;
    }
    const std::vector<std::string> failures = expectations.failures();
    for (const std::string& failure : failures) console.error(failure);
    if (failures.empty()) console.note("all is as expected");
    return failures.empty() ? status : ExitStatus::BadInput;
}

void summarize(const RunFacts& facts, const DevicePipeline& pipeline, Console& console) {
    console.summary(facts.counts, facts.elapsed);
    console.table("dropped by", pipeline.drops());
    const std::map<std::string, uint64_t> counters = pipeline.counters();
    console.table("counters", {counters.begin(), counters.end()});
}

ExitStatus replayFiles(RunFiles& files, const RunOptions& options, Console& console) {
    Watchers watchers;
    if (files.expectations) watchers.expectations.emplace(readExpectations(*files.expectations));
    if (files.report) watchers.report.emplace(options.reportEvents);
    DeskDevice device(files, options.store, console);
    DevicePipeline& pipeline = device.pipeline();
    Replay replay(files, pipeline, console, replayOptions(options, pipeline, watchers));
    files.emptyOutputs();
    expectInterruption();
    showStatus(files, console);
    if (files.trace) host::startTracing();

    RunFacts facts;
    facts.started = std::chrono::system_clock::now();
    const auto start = std::chrono::steady_clock::now();
    const bool hasRun = runOnConsole(replay, console);
    const bool areClosed = closeEventFiles(files, console);
    if (areClosed) sayWhereItEnded(replay, hasRun, files, console);
    bool usable = hasRun && areClosed;
    usable &= console.attempt([&] { device.handBackSequenceNumbers(); });
    facts.elapsed = std::chrono::steady_clock::now() - start;
    facts.counts = replay.counts();
    usable &= finishTrace(files, console);
    if (watchers.report) usable &= finishReport(*watchers.report, facts, files, pipeline, console);

    summarize(facts, pipeline, console);
    ExitStatus status = facts.counts.bad > 0 ? ExitStatus::BadInput : ExitStatus::Success;
    if (watchers.expectations) status = checkExpectations(*watchers.expectations, replay, status, console);
    if (!usable) return ExitStatus::Unusable;
    return interruption() != 0 ? statusOfInterruption() : status;
}

}  // namespace

ExitStatus runCommand(const RunOptions& options) {
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
