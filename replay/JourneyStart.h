#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "replay/EventDecoder.h"
#include "replay/Journey.h"

namespace Velo::OS::Telemetry::replay {

/// Begins journeys. Not to be used by two threads at once.
class JourneyStart {
public:
    /// The journey of an event, which the line describes, through these stages. Null if it cannot be told, because the
    /// line is a report that is no line of input.
    std::unique_ptr<Journey> begin(const LinePlace& place, bool isReport, const TelemetryEvent& event,
                                   std::string_view line, const std::vector<Journey::Stage>& stages);

private:
    EventDecoder decoder_;
};

}  // namespace Velo::OS::Telemetry::replay
