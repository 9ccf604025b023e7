#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "replay/Journey.h"
#include "replay/LinePlace.h"
#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry::replay {

/// What became of an event in the end.
struct Kept {
    std::string_view line;  // of output, with its newline; lent
};
struct Dropped {
    Json::Value why;  // as `DevicePipeline::explainDrop` has it
};
struct Failed {  // in the stage that it entered last
    std::string reason;
};
struct Unwritable {
    std::string reason;
};
using Outcome = std::variant<Kept, Dropped, Failed, Unwritable>;

/// An event that has gone its way, for those who look at all of a run. What it refers to is lent for the call.
struct Observation {
    const LinePlace& place;
    bool isReport;  // a monitor event, about what stands there
    const std::string& name;
    int64_t realtimeMs;  // since boot, when it was created; 0 if it does not say
    const Outcome& outcome;
    TelemetryEvent* kept;    // as it leaves; null if it was not kept
    const Journey* journey;  // null if it was not followed
};

}  // namespace Velo::OS::Telemetry::replay
