#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "replay/EventExpectation.h"
#include "replay/InputFile.h"
#include "replay/Outcome.h"

namespace Velo::OS::Telemetry::replay {

/// What must hold of a run: how many events of which names are logged, kept, bad and dropped, and what is in those that
/// are kept. Memory does not grow with the number of events. Not to be used by two threads at once.
///
///     {"events": {NAME: {"logged": COUNT, "kept": COUNT, "bad": COUNT,
///                        "dropped": COUNT or {GUARD or REASON: COUNT},
///                        "data": {FIELD: CONDITION}, "header": {FIELD: CONDITION}}}}
///
/// NAME is that of events, in which "*" stands for any characters and "?" for one, of at most 1,024 bytes. What two
/// names fit counts for both. COUNT is a number or {"min": number, "max": number}, of which one may be absent; beside
/// guards and reasons, min and max are those of all drops. CONDITION is {"present": bool}, {"type": "null", "boolean",
/// "integer", "number", "string", "array" or "object"},
/// {"value": value} or {"one_of": [value]}; it must hold of the member in every event that is kept, and there must be
/// one. There must be events of each NAME too, unless it only has counts and all are 0.
/// Monitor events count like any other. A bad line that is no event has no name and counts nowhere.
class Expectations {
public:
    explicit Expectations(std::vector<EventExpectation> expectations) : expectations_(std::move(expectations)) {}
    Expectations(Expectations&&) = default;
    Expectations(const Expectations&) = delete;

    void observe(const Observation& event);

    /// What does not hold of the events observed so far, one message each, such as "expect.json:7:
    /// events.app_launch.kept: expected 10, seen 12". May hold control characters of the file and of events.
    std::vector<std::string> failures() const;

private:
    const std::vector<EventExpectation*>& concernedBy(const std::string& name);

    std::vector<EventExpectation> expectations_;
    // Whom the names that have been seen concern; not all, if they are very many.
    std::unordered_map<std::string, std::vector<EventExpectation*>> byName_;
    std::vector<EventExpectation*> byLastName_;  // that is none of these
};

/// Reads expectations, one JSON object. Throws `FileError` with the path of the member that is wrong,
/// "FILE:LINE: events.app_launch.kept: expected an unsigned 64-bit integer".
Expectations readExpectations(InputFile& file);

}  // namespace Velo::OS::Telemetry::replay
