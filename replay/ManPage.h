#pragma once

#include <string>

#include "replay/CommandTree.h"

namespace Velo::OS::Telemetry::replay {

/// The manual page of the tool and all its commands, for section 1: roff with the man macros, in ASCII.
std::string formatManPage(const Command& tool);

}  // namespace Velo::OS::Telemetry::replay
