#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "replay/Journey.h"
#include "replay/JourneyStart.h"
#include "replay/Outcome.h"
#include "replay/OutputFile.h"

namespace Velo::OS::Telemetry::replay {

/// Which events are to be explained: those to which everything that is given applies. Events that the pipeline itself
/// reported are among them only if their names are given.
struct ExplainChoice {
    std::set<uint64_t> lines;       // empty: of any line
    std::set<std::string> names;    // empty: of any name
    std::optional<uint64_t> first;  // that many at most
};

/// Writes the journeys of chosen events.
class Explainer {
public:
    enum class Format { Text, ColouredText, Json };

    /// The output must outlive it.
    Explainer(ExplainChoice choice, OutputFile& output, Format format)
        : choice_(std::move(choice)), output_(output), format_(format) {}

    /// Begins the journey of an event, which the line describes, through these stages; null if it is not chosen.
    std::unique_ptr<Journey> follow(const LinePlace& place, bool isReport, const TelemetryEvent& event,
                                    std::string_view line, const std::vector<Journey::Stage>& stages);
    /// Writes the journey of an event that was followed.
    void explain(const Observation& observation);

    uint64_t explained() const { return explained_; }
    /// The names asked for that no event has had so far: "; no NAME; did you mean ...". Empty if there is none.
    std::string missingNames() const;
    /// Whether the choice speaks of that line, be it of an event or not.
    bool concerns(const LinePlace& place) const;
    /// Whether no event can be chosen any more after that line.
    bool isDone(const LinePlace& place, bool isInLastFile) const;

private:
    bool isChosen(const LinePlace& place, bool isReport, const std::string& name) const;
    void rememberName(const std::string& name);

    const ExplainChoice choice_;
    OutputFile& output_;
    const Format format_;
    JourneyStart start_;
    std::set<std::string> seenNames_;  // of events; not all others, if they are very many
    uint64_t followed_ = 0;
    uint64_t explained_ = 0;
};

}  // namespace Velo::OS::Telemetry::replay
