#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Velo::OS::Telemetry::replay {

/// What --help of the command prints: lines of at most 90 columns, the last of which ends too.
std::string formatHelp(const CLI::App& command);

/// The subcommands with their descriptions, one or more lines each.
std::string formatSubcommands(const CLI::App& command);

}  // namespace Velo::OS::Telemetry::replay
