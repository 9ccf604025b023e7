#include "replay/ManPage.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <span>
#include <sstream>
#include <string_view>
#include <utility>

#include "replay/HelpTexts.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// The day of the release, as CHANGELOG.md has it. That of the build would make no two builds alike.
constexpr char kDate[] = "2026-11-22";

/// What would be an escape or become a typographic character, which is not what is to be copied from the page.
constexpr std::pair<char, std::string_view> kEscapes[] = {{'\\', "\\e"},  {'-', "\\-"},   {'\'', "\\(aq"},
                                                          {'`', "\\(ga"}, {'^', "\\(ha"}, {'~', "\\(ti"}};

/// The text as roff that shows it as it is.
std::string literal(std::string_view text) {
    std::string roff;
    for (const char c : text) {
        const auto escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                         [&](const auto& candidate) { return candidate.first == c; });
        roff += escape == std::end(kEscapes) ? std::string_view(&c, 1) : escape->second;
    }
    return roff;
}

std::string bold(std::string_view text) { return "\\fB" + literal(text) + "\\fR"; }

std::string italic(std::string_view text) { return "\\fI" + literal(text) + "\\fR"; }

/// A line of text. One that begins with a dot would be a request.
std::string line(const std::string& roff) { return (roff.starts_with('.') ? "\\&" : "") + roff + "\n"; }

/// Lines that are shown as they are.
std::string verbatim(std::string_view text) {
    std::string roff = ".nf\n";
    std::istringstream lines{std::string(text)};
    for (std::string each; std::getline(lines, each);) roff += line(literal(each));
    return roff + ".fi\n";
}

/// "telemetry-replay run [OPTIONS] [FILE...]", in which what stands for something else is in italics.
std::string synopsis(const Command& command) {
    std::string roff = bold(command.call);
    std::istringstream words(synopsisOf(command).substr(command.call.size()));
    for (std::string word; words >> word;) {
        const size_t begin = word.find_first_not_of('['), end = word.find_first_of(".]");
        roff += " " + word.substr(0, begin) + italic(word.substr(begin, end - begin));
        if (end != std::string::npos) roff += word.substr(end);
    }
    return roff;
}

/// A term, and its description deeper and below.
std::string entry(const std::string& term, const std::string& description) {
    return ".TP 8\n" + line(term) + description;
}

std::string argumentEntry(const Argument& argument) {
    std::string term;
    for (const std::string& name : argument.names) term.append(term.empty() ? "" : ", ").append(bold(name));
    const std::string value = shownValueOf(argument);
    if (!value.empty()) term += (term.empty() ? "" : " ") + italic(value);
    return entry(term, line(literal(argument.description)));
}

std::string argumentEntries(const Command& command) {
    std::string roff;
    for (const Argument& positional : command.positionals) roff += argumentEntry(positional);
    for (const Argument& option : command.options) {
        const bool isHelpOfAll = !pathOf(command).empty() && option.names.back() == "--help";
        if (!isHelpOfAll) roff += argumentEntry(option);
    }
    return roff;
}

std::string formatBlock(const HelpBlock& block) {
    const std::string text = block.text.empty() ? "" : line(literal(block.text));
    switch (block.kind) {
        case HelpBlock::Kind::Paragraph:
            return ".PP\n" + text;
        case HelpBlock::Kind::Definition:
            return entry(bold(block.term), (block.shape.empty() ? "" : verbatim(block.shape)) + text);
        case HelpBlock::Kind::Example:
            return ".PP\n" + line(literal(block.term)) + ".RS 4\n" + verbatim(block.text) + ".RE\n";
    }
    return {};
}

std::string formatBlocks(std::span<const HelpBlock> blocks) {
    std::string roff;
    for (const HelpBlock& block : blocks) roff += formatBlock(block);
    return roff;
}

/// A heading needs no paragraph of its own to stand apart from what follows.
std::string heading(const std::string& macro, const std::string& title, std::string content) {
    constexpr std::string_view kParagraph = ".PP\n";
    if (content.starts_with(kParagraph)) content.erase(0, kParagraph.size());
    return macro + " \"" + title + "\"\n" + content;
}

std::string section(std::string title, const std::string& content) {
    for (char& c : title) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return heading(".SH", title, content);
}

std::string formatSections(std::span<const HelpSection> sections) {
    std::string roff;
    for (const HelpSection& each : sections) roff += section(std::string(each.title), formatBlocks(each.blocks));
    return roff;
}

std::string formatCommand(const Command& command) {
    const CommandHelp& help = helpOf(pathOf(command));
    std::string roff = line(literal(help.description)) + argumentEntries(command);
    for (const HelpSection& each : help.own) roff += ".PP\n" + line(bold(each.title)) + formatBlocks(each.blocks);
    return heading(".SS", synopsis(command), roff);
}

/// "replays events": as the index of manual pages lists it, a sentence neither begins nor ends.
std::string briefly(std::string_view sentence) {
    std::string text(sentence.substr(0, sentence.find_last_not_of('.') + 1));
    text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    return literal(text);
}

std::string formatSynopses(const Commands& commands) {
    std::string roff;
    for (const Command* command : commands) {
        if (!roff.empty()) roff += ".br\n";
        roff += line(synopsis(*command));
    }
    return roff;
}

/// Those of a group of commands are its commands' too.
std::string formatExamples(const Commands& commands) {
    std::string roff;
    for (const Command* command : commands) {
        if (command->subcommands.empty()) roff += formatBlocks(helpOf(pathOf(*command)).examples);
    }
    return roff;
}

}  // namespace

std::string formatManPage(const Command& tool) {
    const CommandHelp& help = helpOf(pathOf(tool));
    const Commands commands = allCommandsOf(tool);
    std::string commandSections;
    for (const Command* command : commands) commandSections += formatCommand(*command);
    // No word is hyphenated, and none is stretched apart: many are names.
    return ".TH TELEMETRY\\-REPLAY 1 " + std::string(kDate) + " \"" +
           literal(tool.call + " " TELEMETRY_REPLAY_VERSION) + "\"\n.nh\n.ad l\n" +
           section("Name", literal(tool.call) + " \\- " + briefly(help.description) + "\n") +
           section("Synopsis", formatSynopses(commands)) + formatSections(help.own) +
           section("Options", argumentEntries(tool)) + section("Commands", commandSections) +
           formatSections(referenceSections()) + section("Examples", formatExamples(commands)) +
           section("See also", ".BR jq (1)\n");
}

}  // namespace Velo::OS::Telemetry::replay
