#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Velo::OS::Telemetry::replay {

/// What help, manual page and completion ask of the commands, which CLI11 parses by. Pointers live as long as the
/// tool's `CLI::App`.

using Commands = std::vector<const CLI::App*>;
using Arguments = std::vector<const CLI::Option*>;

/// Those right below the command, in the order in which they were added.
Commands subcommandsOf(const CLI::App& command);
/// All below the tool, each before its own subcommands.
Commands allCommandsOf(const CLI::App& tool);

/// "telemetry-replay schema check".
std::string callOf(const CLI::App& command);
/// "schema check"; empty for the tool itself.
std::string pathOf(const CLI::App& command);
/// "telemetry-replay schema lookup [OPTIONS] FILE NAME...".
std::string synopsisOf(const CLI::App& command);

/// What has a name that begins with "-", and what is known by its place.
Arguments optionsOf(const CLI::App& command);
Arguments positionalsOf(const CLI::App& command);

/// "-o" and "--output".
std::vector<std::string> namesOf(const CLI::Option& option);
/// The words with the separator between them.
std::string joined(const std::vector<std::string>& words, std::string_view separator);
/// "FILE"; empty if the option takes no value. Of a positional its name.
std::string valueOf(const CLI::Option& option);
/// As it stands in a synopsis: "FILE" or "NAME...".
std::string repeatableValueOf(const CLI::Option& positional);

}  // namespace Velo::OS::Telemetry::replay
