#include "replay/BashCompletion.h"

#include <string_view>
#include <vector>

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
    for (const Command* command : commands) calls.push_back(command->call);
    return "            " + alternatives(calls) + ") command+=\" ${COMP_WORDS[i]}\" ;;\n        esac\n    done\n";
}

/// What there is to complete behind the command.
std::string choicesOf(const Command& command) {
    std::vector<std::string> options;
    for (const Argument& option : command.options) {
        options.insert(options.end(), option.names.begin(), option.names.end());
    }
    std::vector<std::string> subcommands;
    for (const Command& subcommand : command.subcommands) subcommands.emplace_back(nameOf(subcommand));

    std::string script = "        " + quoted(command.call) + ")\n";
    script += "            options=" + quoted(joined(options, " ")) + "\n";
    if (!subcommands.empty()) script += "            subcommands=" + quoted(joined(subcommands, " ")) + "\n";
    if (!command.positionals.empty()) script += "            positional=" + command.positionals.front().value + "\n";
    return script + "            ;;\n";
}

/// Whether the previous word waits for a value, and for which.
std::string valuesOf(const Command& command) {
    std::string script;
    for (const Argument& option : command.options) {
        if (option.value.empty()) continue;
        std::vector<std::string> calls;
        for (const std::string& name : option.names) calls.push_back(command.call + " " + name);
        script += "        " + alternatives(calls) + ") value=" + option.value + " ;;\n";
    }
    return script;
}

}  // namespace

std::string formatBashCompletion(const Command& tool) {
    Commands commands = allCommandsOf(tool);
    std::string script = std::string(kHead) + stepsInto(commands);
    commands.insert(commands.begin(), &tool);
    std::string values;
    script += "    case $command in\n";
    for (const Command* command : commands) {
        script += choicesOf(*command);
        values += valuesOf(*command);
    }
    return script + "    esac\n    case \"$command $previous\" in\n" + values + "    esac\n" + std::string(kTail);
}

}  // namespace Velo::OS::Telemetry::replay
