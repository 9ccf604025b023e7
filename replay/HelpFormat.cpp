#include "replay/HelpFormat.h"

#include <algorithm>
#include <span>
#include <sstream>
#include <string_view>
#include <vector>

#include "replay/HelpTexts.h"

namespace Velo::OS::Telemetry::replay {

namespace {

using Lines = std::vector<std::string>;

constexpr size_t kWidth = 90;
constexpr size_t kIndent = 2;
/// Wider terms stand on a line of their own, above their description.
constexpr size_t kMaxTermWidth = 22;

Lines wrap(std::string_view text, size_t width) {
    std::istringstream words{std::string(text)};
    Lines lines;
    for (std::string word; words >> word;) {
        if (lines.empty() || lines.back().size() + 1 + word.size() > width) {
            lines.push_back(word);
        } else {
            lines.back().append(" ").append(word);
        }
    }
    return lines;
}

Lines split(std::string_view text) {
    std::istringstream stream{std::string(text)};
    Lines lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::string indented(const Lines& lines, size_t indent) {
    std::string text;
    for (const std::string& line : lines) text.append(indent, ' ').append(line).append("\n");
    return text;
}

struct Row {
    std::string term;
    std::string_view shape;  // lines to be kept as they are, above the text
    std::string text;
};

Lines describe(const Row& row, size_t width) {
    Lines lines = split(row.shape);
    const Lines text = wrap(row.text, width);
    lines.insert(lines.end(), text.begin(), text.end());
    return lines;
}

/// Terms on the left, their descriptions in a column as near as they allow.
std::string formatRows(const std::vector<Row>& rows, size_t indent) {
    size_t width = 0;
    for (const Row& row : rows) {
        if (row.term.size() <= kMaxTermWidth) width = std::max(width, row.term.size());
    }
    const size_t left = indent + width + 2;
    std::string text;
    for (const Row& row : rows) {
        const std::string description = indented(describe(row, kWidth - left), left);
        text.append(indent, ' ').append(row.term);
        // A term takes the place of its description's indent, if it is not too wide.
        text += row.term.size() > width ? "\n" + description : description.substr(indent + row.term.size());
    }
    return text;
}

std::string formatArguments(const char* title, const std::vector<Argument>& arguments) {
    if (arguments.empty()) return {};
    std::vector<Row> rows;
    for (const Argument& argument : arguments) {
        const std::string names = joined(argument.names, ", ");
        const std::string value = shownValueOf(argument);
        const char* space = names.empty() || value.empty() ? "" : " ";
        rows.push_back({std::string(names).append(space).append(value), {}, argument.description});
    }
    return std::string("\n") + title + ":\n" + formatRows(rows, kIndent);
}

using Blocks = std::span<const HelpBlock>;

bool isDefinition(const HelpBlock& block) { return block.kind == HelpBlock::Kind::Definition; }

/// Definitions stand deeper than the paragraphs that introduce them, and all of a section's in the same two columns.
std::string formatBlocks(Blocks blocks) {
    std::string text;
    for (auto block = blocks.begin(); block != blocks.end();) {
        if (!isDefinition(*block)) {
            if (block != blocks.begin() && !isDefinition(block[-1])) text += "\n";
            text += indented(wrap(block->text, kWidth - kIndent), kIndent);
            ++block;
            continue;
        }
        std::vector<Row> rows;
        for (; block != blocks.end() && isDefinition(*block); ++block) {
            rows.push_back({std::string(block->term), block->shape, std::string(block->text)});
        }
        text += formatRows(rows, 2 * kIndent);
    }
    return text;
}

std::string formatSections(std::span<const HelpSection> sections) {
    std::string text;
    for (const HelpSection& section : sections) {
        text.append("\n").append(section.title).append(":\n").append(formatBlocks(section.blocks));
    }
    return text;
}

std::string formatExamples(Blocks examples) {
    std::string text = "\nExamples:\n";
    for (const HelpBlock& example : examples) {
        text += indented({std::string(example.term)}, kIndent) + indented(split(example.text), 2 * kIndent);
    }
    return text;
}

}  // namespace

std::string formatSubcommands(const Command& command) {
    std::vector<Row> rows;
    for (const Command& subcommand : command.subcommands) {
        rows.push_back({std::string(nameOf(subcommand)), {}, std::string(helpOf(pathOf(subcommand)).description)});
    }
    return formatRows(rows, kIndent);
}

std::string formatHelp(const Command& command) {
    const CommandHelp& help = helpOf(pathOf(command));
    std::string text = std::string(help.description) + "\n\nUsage: " + synopsisOf(command) + "\n";
    text += formatArguments("Arguments", command.positionals);
    text += formatArguments("Options", command.options);
    if (!command.subcommands.empty()) text += "\nSubcommands:\n" + formatSubcommands(command);
    return text + formatSections(help.own) + formatSections(help.reference) + formatExamples(help.examples);
}

}  // namespace Velo::OS::Telemetry::replay
