#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "replay/Console.h"
#include "replay/DevicePipeline.h"
#include "replay/EventDecoder.h"
#include "replay/Explainer.h"
#include "replay/LinePlace.h"
#include "replay/LineReader.h"
#include "replay/RunFiles.h"

namespace Velo::OS::Telemetry::replay {

/// Reads events line by line, has each processed and writes what has become of it. Lines that are no event go to the
/// rejects as they are, events that a guard drops to the drops. What stages report about an event is logged after it,
/// as events of their own.
class Replay {
public:
    enum class BadLines { Continue, Stop };

    /// All arguments lent must outlive it. With an explainer, it takes the place of the output, and the run stops when
    /// it has nothing more to explain.
    Replay(RunFiles& files, DevicePipeline& pipeline, Console& console, BadLines badLines,
           Explainer* explainer = nullptr);

    /// Reads the inputs to their end, or to the first bad line if that is to stop the run. Throws `FileError`; the
    /// counts then say how far it came. Outputs may still hold lines in their buffers afterwards.
    void run();

    const Counts& counts() const { return counts_; }

private:
    void replayFile(InputFile& input);
    void handleLine(std::string_view line);
    void handleEvent(std::unique_ptr<TelemetryEventBundle> event, bool isReport, std::string_view line,
                     const Json::Value* earlierDrop);
    std::optional<EventResult> process(std::unique_ptr<TelemetryEventBundle> event, bool isReport,
                                       std::string_view line);
    void explain(const Outcome& outcome);
    void writeDrop(std::string_view line, const Json::Value* earlierDrop);
    void logReports();
    void logReport(const MonitorReport& report, bool isTooFar);
    void handleLongLine(LineReader& reader);
    void countBad(std::string_view reason);
    void reject(std::string_view line, std::string_view reason);

    RunFiles& files_;
    DevicePipeline& pipeline_;
    Console& console_;
    const BadLines badLines_;
    Explainer* const explainer_;

    EventDecoder decoder_;
    LinePlace place_;
    std::string outputLine_;
    Counts counts_;
    bool stopped_ = false;
    bool hasGoneTooFar_ = false;  // with reports
};

}  // namespace Velo::OS::Telemetry::replay
