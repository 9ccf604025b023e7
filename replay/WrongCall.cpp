#include "replay/WrongCall.h"

#include <sstream>
#include <string_view>
#include <vector>

#include "replay/Console.h"
#include "replay/HelpFormat.h"
#include "replay/Suggestion.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// "-q" is as near to "-h" as to any other.
constexpr size_t kShortNameLength = 2;

void pointToHelp(const std::string& call, Console& console) {
    console.error("Run " + call + " --help for more information.");
}

}  // namespace

std::optional<std::string> findEmptyValue(std::span<const char* const> arguments) {
    for (const std::string_view argument : arguments) {
        if (argument == "--") break;
        const size_t equals = argument.find('=');
        if (argument.starts_with("--") && equals + 1 == argument.size()) return std::string(argument.substr(0, equals));
    }
    return std::nullopt;
}

std::string describeUnexpected(const std::string& word, const Command& command) {
    std::vector<std::string_view> known;
    if (!word.starts_with('-') && !command.subcommands.empty()) {
        for (const Command& subcommand : command.subcommands) known.push_back(nameOf(subcommand));
        return "There is no subcommand " + word + didYouMean(word, known);
    }
    for (const Argument& option : command.options) {
        known.insert(known.end(), option.names.begin(), option.names.end());
    }
    const std::string name = word.substr(0, word.starts_with("--") ? word.find('=') : word.npos);
    return "The following argument was not expected: " + name +
           (name.size() > kShortNameLength ? didYouMean(name, known) : "");
}

ExitStatus reportWrongCall(const std::string& call, const std::string& message) {
    Console console(/*quiet=*/false);
    console.error(message);
    pointToHelp(call, console);
    return ExitStatus::Unusable;
}

ExitStatus reportMissingSubcommand(const Command& command) {
    Console console(/*quiet=*/false);
    console.error("A subcommand is required");
    console.error("Usage: " + synopsisOf(command));
    std::istringstream subcommands(formatSubcommands(command));
    for (std::string line; std::getline(subcommands, line);) console.error(line);
    pointToHelp(command.call, console);
    return ExitStatus::Unusable;
}

}  // namespace Velo::OS::Telemetry::replay
