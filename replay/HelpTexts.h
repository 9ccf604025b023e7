#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// What the tool says about itself beyond its options. --help and the manual page are both made from it, so nothing
/// here is laid out yet: texts are wrapped by whoever shows them. All of it is ASCII and lives as long as the process.

/// A paragraph, an entry of a list of definitions, or an example.
struct HelpBlock {
    enum class Kind : uint8_t { Paragraph, Definition, Example };

    Kind kind;
    std::string_view term;   // of a definition; of an example what it is for
    std::string_view shape;  // of a definition: JSON, whose lines are shown as they are, before the text; may be empty
    std::string_view text;   // of an example a command line, shown as it is
};

struct HelpSection {
    std::string_view title;
    std::span<const HelpBlock> blocks;
};

struct CommandHelp {
    std::string_view command;                // behind the tool's name: "schema check"; empty: the tool itself
    std::string_view description;            // one sentence
    std::span<const HelpSection> own;        // what concerns this command alone
    std::span<const HelpSection> reference;  // what it has in common with others: these are among `referenceSections`
    std::span<const HelpBlock> examples;
};

/// Of a command that there is.
const CommandHelp& helpOf(std::string_view command);

/// The sections on files, exit status and environment, in the order of a manual page.
std::span<const HelpSection> referenceSections();

}  // namespace Velo::OS::Telemetry::replay
