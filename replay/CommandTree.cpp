#include "replay/CommandTree.h"

namespace Velo::OS::Telemetry::replay {

std::string_view nameOf(const Command& command) {
    const std::string_view call = command.call;
    return call.substr(call.rfind(' ') + 1);
}

std::string_view pathOf(const Command& command) {
    const std::string_view call = command.call;
    const size_t space = call.find(' ');
    return space == std::string_view::npos ? std::string_view() : call.substr(space + 1);
}

std::string synopsisOf(const Command& command) {
    std::string synopsis = command.call + " [OPTIONS]";
    for (const Argument& positional : command.positionals) {
        const std::string value = shownValueOf(positional);
        synopsis += positional.isRequired ? " " + value : " [" + value + "]";
    }
    return command.subcommands.empty() ? synopsis : synopsis + " SUBCOMMAND";
}

std::string shownValueOf(const Argument& argument) { return argument.value + (argument.takesRest ? "..." : ""); }

Commands allCommandsOf(const Command& tool) {
    Commands commands;
    for (const Command& command : tool.subcommands) {
        commands.push_back(&command);
        const Commands below = allCommandsOf(command);
        commands.insert(commands.end(), below.begin(), below.end());
    }
    return commands;
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
    std::string text;
    for (const std::string& word : words) text.append(&word == &words.front() ? "" : separator).append(word);
    return text;
}

}  // namespace Velo::OS::Telemetry::replay
