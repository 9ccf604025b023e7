#include "replay/BashCompletion.h"

#include <CLI/CLI.hpp>
#include <string_view>
#include <vector>

#include "replay/CommandTree.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// Files and directories are left to bash, which knows how to quote them. "=" is a word of its own in --device=FILE.
constexpr std::string_view kHead = R"(# bash completion for telemetry-replay(1)

_telemetry_replay() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=telemetry-replay options= subcommands= positional= value= i
    if [[ $current == = ]]; then
        current=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        case "$command ${COMP_WORDS[i]}" in
)";

constexpr std::string_view kTail = R"(    COMPREPLY=()
    case ${value:-$positional} in
        FILE) [[ $value || $current != -* ]] && compopt -o default && return ;;
        DIR) [[ $value || $current != -* ]] && compopt -o dirnames && return ;;
    esac
    [[ $value ]] && return
    [[ $current == -* ]] && subcommands= || options=
    mapfile -t COMPREPLY < <(compgen -W "$options $subcommands" -- "$current")
}

complete -F _telemetry_replay telemetry-replay
)";

std::string quoted(const std::string& word) { return '"' + word + '"'; }

/// The labels of a case: "a" | "b".
std::string alternatives(const std::vector<std::string>& words) { return quoted(joined(words, "\" | \"")); }

/// The line that follows words into subcommands.
std::string stepsInto(const Commands& commands) {
    std::vector<std::string> calls;
    for (const CLI::App* command : commands) calls.push_back(callOf(*command));
    return "            " + alternatives(calls) + ") command+=\" ${COMP_WORDS[i]}\" ;;\n        esac\n    done\n";
}

/// What there is to complete behind the command.
std::string choicesOf(const CLI::App& command) {
    std::vector<std::string> options;
    for (const CLI::Option* option : optionsOf(command)) {
        for (const std::string& name : namesOf(*option)) options.push_back(name);
    }
    std::vector<std::string> subcommands;
    for (const CLI::App* subcommand : subcommandsOf(command)) subcommands.push_back(subcommand->get_name());

    std::string script = "        " + quoted(callOf(command)) + ")\n";
    script += "            options=" + quoted(joined(options, " ")) + "\n";
    if (!subcommands.empty()) script += "            subcommands=" + quoted(joined(subcommands, " ")) + "\n";
    const Arguments positionals = positionalsOf(command);
    if (!positionals.empty()) script += "            positional=" + valueOf(*positionals.front()) + "\n";
    return script + "            ;;\n";
}

/// Whether the previous word waits for a value, and for which.
std::string valuesOf(const CLI::App& command) {
    std::string script;
    for (const CLI::Option* option : optionsOf(command)) {
        if (valueOf(*option).empty()) continue;
        std::vector<std::string> calls;
        for (const std::string& name : namesOf(*option)) calls.push_back(callOf(command) + " " + name);
        script += "        " + alternatives(calls) + ") value=" + valueOf(*option) + " ;;\n";
    }
    return script;
}

}  // namespace

std::string formatBashCompletion(const CLI::App& tool) {
    Commands commands = allCommandsOf(tool);
    std::string script = std::string(kHead) + stepsInto(commands);
    commands.insert(commands.begin(), &tool);
    std::string values;
    script += "    case $command in\n";
    for (const CLI::App* command : commands) {
        script += choicesOf(*command);
        values += valuesOf(*command);
    }
    return script + "    esac\n    case \"$command $previous\" in\n" + values + "    esac\n" + std::string(kTail);
}

}  // namespace Velo::OS::Telemetry::replay
