#pragma once

#include <string>

#include "replay/CommandTree.h"

namespace Velo::OS::Telemetry::replay {

/// What --help of the command prints: lines of at most 90 columns, the last of which ends too.
std::string formatHelp(const Command& command);

/// The subcommands with their descriptions, one or more lines each.
std::string formatSubcommands(const Command& command);

}  // namespace Velo::OS::Telemetry::replay
