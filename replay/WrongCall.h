#pragma once

#include <optional>
#include <span>
#include <string>

#include "replay/CommandTree.h"
#include "replay/ExitStatus.h"

namespace Velo::OS::Telemetry::replay {

/// What is said of calls that cannot be understood.

/// The option of "--device=", for which the parser would take the word behind it.
std::optional<std::string> findEmptyValue(std::span<const char* const> arguments);

/// Names the word, which the command does not know, and what may be meant by it.
std::string describeUnexpected(const std::string& word, const Command& command);

/// Says what is wrong on standard error, and which help to ask for: that of the command so called.
ExitStatus reportWrongCall(const std::string& call, const std::string& message);

/// Says which subcommands there are, on standard error.
ExitStatus reportMissingSubcommand(const Command& command);

}  // namespace Velo::OS::Telemetry::replay
