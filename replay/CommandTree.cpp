#include "replay/CommandTree.h"

#include <CLI/CLI.hpp>

namespace Velo::OS::Telemetry::replay {

Commands subcommandsOf(const CLI::App& command) { return command.get_subcommands(nullptr); }

Commands allCommandsOf(const CLI::App& tool) {
    Commands commands;
    for (const CLI::App* command : subcommandsOf(tool)) {
        commands.push_back(command);
        const Commands below = allCommandsOf(*command);
        commands.insert(commands.end(), below.begin(), below.end());
    }
    return commands;
}

std::string callOf(const CLI::App& command) {
    return command.get_parent() ? callOf(*command.get_parent()) + " " + command.get_name() : command.get_name();
}

std::string pathOf(const CLI::App& command) {
    const std::string call = callOf(command);
    const size_t space = call.find(' ');
    return space == std::string::npos ? std::string() : call.substr(space + 1);
}

std::string synopsisOf(const CLI::App& command) {
    std::string synopsis = callOf(command) + " [OPTIONS]";
    for (const CLI::Option* positional : positionalsOf(command)) {
        const std::string value = repeatableValueOf(*positional);
        synopsis += positional->get_required() ? " " + value : " [" + value + "]";
    }
    return subcommandsOf(command).empty() ? synopsis : synopsis + " SUBCOMMAND";
}

Arguments optionsOf(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

Arguments positionalsOf(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
    std::string text;
    for (const std::string& word : words) text.append(&word == &words.front() ? "" : separator).append(word);
    return text;
}

std::string valueOf(const CLI::Option& option) {
    if (option.get_positional()) return option.get_name(/*positional=*/true);
    return option.get_items_expected_max() > 0 ? option.get_type_name() : std::string();
}

std::string repeatableValueOf(const CLI::Option& positional) {
    return valueOf(positional) + (positional.get_items_expected_max() > 1 ? "..." : "");
}

}  // namespace Velo::OS::Telemetry::replay
