#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Velo::OS::Telemetry::replay {

/// What help, manual page and completion show of the commands: plain data, so that they need no parser.

/// An option, or a positional: an argument that is known by its place.
struct Argument {
    std::vector<std::string> names;  // "-o" and "--output"; a positional has none
    std::string value;               // "FILE"; empty if it takes none
    std::string description;
    bool isRequired = false;
    bool takesRest = false;  // a positional for any number of words
};

struct Command {
    std::string call;  // "telemetry-replay schema check"
    std::vector<Argument> positionals;
    std::vector<Argument> options;
    std::vector<Command> subcommands;  // those right below, in the order of the help
};

using Commands = std::vector<const Command*>;

/// "check". Like the path, it lives as long as the command.
std::string_view nameOf(const Command& command);
/// "schema check"; empty for the tool itself.
std::string_view pathOf(const Command& command);
/// "telemetry-replay schema lookup [OPTIONS] FILE NAME...".
std::string synopsisOf(const Command& command);
/// The value as it stands in a synopsis: "FILE" or "NAME...".
std::string shownValueOf(const Argument& argument);
/// All below the tool, each before its own subcommands. They live as long as the tool.
Commands allCommandsOf(const Command& tool);

/// The words with the separator between them.
std::string joined(const std::vector<std::string>& words, std::string_view separator);

}  // namespace Velo::OS::Telemetry::replay
