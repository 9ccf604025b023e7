#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "replay/CountExpectation.h"
#include "replay/FieldExpectation.h"
#include "replay/JsonNode.h"
#include "replay/Outcome.h"
#include "replay/StrictJson.h"

namespace Velo::OS::Telemetry::replay {

/// Which events are counted.
struct EventKind {
    const char* name;
    bool (*includes)(const Outcome& outcome, const char* name);
};

/// What is expected of the events whose name a pattern fits: of their number, and of the fields of those that are kept.
class EventExpectation {
public:
    EventExpectation(std::string pattern, const JsonNode& node);

    bool concerns(std::string_view name) const;
    /// Of an event that it concerns.
    void observe(const Observation& event);
    /// What does not hold so far. `names` are those that an unknown one may stand for.
    std::vector<std::string> failures(std::span<const std::string_view> names) const;

private:
    JsonNode::Field readCount(const EventKind& kind);
    void readDropped(const JsonNode& node);
    JsonNode::Use readFields(std::vector<FieldExpectation>& fields);
    bool expectsNoEvent() const;
    void observeFields(TelemetryEvent& kept, const LinePlace& place);

    std::string pattern_;
    std::string where_;
    bool isMatched_ = false;
    std::vector<std::pair<const EventKind*, CountExpectation>> counts_;
    std::vector<FieldExpectation> data_, header_;
    StrictJson json_;  // for headers
};

}  // namespace Velo::OS::Telemetry::replay
