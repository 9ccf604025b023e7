#pragma once

#include <string>

#include "replay/Journey.h"
#include "replay/Outcome.h"

namespace Velo::OS::Telemetry::replay {

/// The journey for people: a headline, a paragraph a stage, what became of the event, an empty line.
std::string toText(const Journey& journey, const Outcome& outcome, bool hasColour);

/// The journey for tools: one JSON object, and a newline.
std::string toJsonLine(const Journey& journey, const Outcome& outcome);

}  // namespace Velo::OS::Telemetry::replay
