#pragma once

#include <string>
#include <variant>

#include "replay/Journey.h"

namespace Velo::OS::Telemetry::replay {

/// What became of an event in the end.
struct Kept {
    std::string line;  // of output
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

/// The journey for people: a headline, a paragraph a stage, what became of the event, an empty line.
std::string toText(const Journey& journey, const Outcome& outcome, bool hasColour);

/// The journey for tools: one JSON object, and a newline.
std::string toJsonLine(const Journey& journey, const Outcome& outcome);

}  // namespace Velo::OS::Telemetry::replay
