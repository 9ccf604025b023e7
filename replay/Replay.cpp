#include "replay/Replay.h"

#include <exception>
#include <utility>

#include "replay/DropLine.h"
#include "replay/Escape.h"
#include "replay/FileError.h"
#include "replay/LibraryLog.h"
#include "replay/OutputLine.h"

namespace Velo::OS::Telemetry::replay {

namespace {

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

/// Attributes what the library logs to a place for as long as it lives.
class LoggingPlace {
public:
    explicit LoggingPlace(const LinePlace& place) { LibraryLog::setPlace(&place); }
    LoggingPlace(const LoggingPlace&) = delete;
    LoggingPlace& operator=(const LoggingPlace&) = delete;
    ~LoggingPlace() { LibraryLog::setPlace(nullptr); }
};

}  // namespace

Replay::Replay(RunFiles& files, DevicePipeline& pipeline, Console& console, BadLines badLines, Explainer* explainer)
    : files_(files), pipeline_(pipeline), console_(console), badLines_(badLines), explainer_(explainer) {}

void Replay::run() {
    const LoggingPlace loggingPlace(place_);
    for (InputFile& input : files_.inputs) replayFile(input);
}

void Replay::replayFile(InputFile& input) {
    LineReader reader(input);
    const uint64_t bytesBefore = counts_.bytes;
    place_.file = input.name();
    while (!stopped_) {
        const LineReader::Found found = reader.next();
        if (found == LineReader::Found::End) return;

        place_.line = reader.lineNumber();
        counts_.bytes = bytesBefore + reader.bytesRead();
        if (found == LineReader::Found::LongLine) {
            handleLongLine(reader);
            counts_.bytes = bytesBefore + reader.bytesRead();
        } else if (!isBlank(reader.text())) {
            handleLine(reader.text());
        }
        if (explainer_ && explainer_->isDone(place_.line, &input == &files_.inputs.back())) stopped_ = true;
        console_.progress(counts_.bytes);
    }
}

void Replay::handleLine(std::string_view line) {
    ++counts_.read;
    EventDecoder::Decoded decoded = decoder_.decode(line);
    if (const auto* error = std::get_if<LineError>(&decoded)) {
        reject(line, error->text);
    } else {
        handleEvent(std::get<std::unique_ptr<TelemetryEventBundle>>(std::move(decoded)), /*isReport=*/false, line,
                    decoder_.earlierDrop());
        logReports();
    }
}

/// `line` describes the event, be it read or reported, with the member "dropped" that it had, if any.
void Replay::handleEvent(std::unique_ptr<TelemetryEventBundle> event, bool isReport, std::string_view line,
                         const Json::Value* earlierDrop) {
    std::optional<EventResult> result = process(std::move(event), isReport, line);
    if (!result) return;
    if (result->hasError()) {
        explain(Dropped{pipeline_.explainDrop()});
        return writeDrop(line, earlierDrop);
    }
    const std::unique_ptr<TelemetryEvent> processed = result->takeValue();
    if (!writeOutputLine(*processed, outputLine_)) {
        constexpr char kReason[] = "bundle: cannot be converted to JSON";
        explain(Unwritable{kReason});
        return reject(line, kReason);
    }
    ++counts_.kept;
    if (explainer_) return explain(Kept{outputLine_});
    files_.output.write(outputLine_);
}

/// None if the pipeline failed, and the line is bad.
std::optional<EventResult> Replay::process(std::unique_ptr<TelemetryEventBundle> event, bool isReport,
                                           std::string_view line) {
    Journey* journey = nullptr;
    if (explainer_) {
        // Who asks about one event is not asking about others, nor to be told everything twice.
        LibraryLog::setPlace(&place_, /*muted=*/true);
        journey = explainer_->begin(place_, isReport, *event, line, pipeline_.stages());
        LibraryLog::setPlace(&place_, /*muted=*/!journey);
    }
    try {
        return pipeline_.processEvent(std::move(event), journey);
    } catch (const FileError&) {
        throw;  // it is the store that failed
    } catch (const std::exception& error) {
        // The library lets through what jsoncpp throws at a member of a wrong type. A run goes on after any event.
        explain(Failed{error.what()});
        reject(line, std::string("the pipeline cannot process it: ") + error.what());
        return std::nullopt;
    }
}

void Replay::explain(const Outcome& outcome) {
    if (explainer_) explainer_->end(outcome);
}

void Replay::writeDrop(std::string_view line, const Json::Value* earlierDrop) {
    ++counts_.dropped;
    if (!files_.drops) return;
    Json::Value dropped = pipeline_.explainDrop();
    dropped["place"] = escaped(toText(place_));
    files_.drops->write(dropLine(line, earlierDrop, dropped));
}

/// A stage may report about a report, and so on, for ever if a rate limit is odd enough.
void Replay::logReports() {
    constexpr int kMaxGenerations = 8;
    for (int generation = 1;; ++generation) {
        const std::vector<MonitorReport> reports = pipeline_.takeReports();
        if (reports.empty()) return;
        for (const MonitorReport& report : reports) logReport(report, generation > kMaxGenerations);
    }
}

void Replay::logReport(const MonitorReport& report, bool isTooFar) {
    const std::string line = toLine(report, place_);
    if (files_.monitorEvents) {
        files_.monitorEvents->write(line);
        files_.monitorEvents->write("\n");
    }
    if (isTooFar) {
        if (!std::exchange(hasGoneTooFar_, true)) console_.warning(place_, "reports beget reports; not all are logged");
        return;
    }
    ++counts_.reported;
    handleEvent(toEvent(report), /*isReport=*/true, line, nullptr);
}

/// Copies the line to the rejects part by part: it may be longer than memory.
void Replay::handleLongLine(LineReader& reader) {
    ++counts_.read;
    countBad("longer than " + std::to_string(LineReader::kMaxLineLength) + " bytes");
    do {
        if (files_.rejects) files_.rejects->write(reader.text());
    } while (reader.nextPart());
    if (files_.rejects) files_.rejects->write("\n");
}

void Replay::countBad(std::string_view reason) {
    if (explainer_ && !explainer_->concerns(place_)) return;
    ++counts_.bad;
    console_.error(place_, reason);
    stopped_ = badLines_ == BadLines::Stop;
}

void Replay::reject(std::string_view line, std::string_view reason) {
    countBad(reason);
    if (!files_.rejects) return;
    files_.rejects->write(line);
    files_.rejects->write("\n");
}

}  // namespace Velo::OS::Telemetry::replay
