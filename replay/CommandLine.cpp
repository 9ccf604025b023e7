#include "replay/CommandLine.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "replay/BashCompletion.h"
#include "replay/CommandTree.h"
#include "replay/ConfigCommand.h"
#include "replay/Console.h"
#include "replay/ExplainCommand.h"
#include "replay/HelpFormat.h"
#include "replay/InitCommand.h"
#include "replay/ManPage.h"
#include "replay/OutputFile.h"
#include "replay/RunCommand.h"
#include "replay/RunOptions.h"
#include "replay/SchemaCommand.h"
#include "replay/WrongCall.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr unsigned kMaxThreads = 64;

/// A check of an argument says what is wrong with it, if anything.
using Check = std::function<std::string(const std::string&)>;

Check expectInteger(uint64_t min, uint64_t max) {
    return [=](const std::string& text) -> std::string {
        uint64_t number = 0;
        const char* end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc() && stop == end && number >= min && number <= max) return {};
        return "expected an integer from " + std::to_string(min) + " to " + std::to_string(max) + ", not \"" + text +
               "\"";
    };
}

Check expectName(const std::string& value) {
    return [=](const std::string& text) {
        return text.empty() ? "expected the name of a " + value + ", not an empty one" : std::string();
    };
}

Check expectCount(uint64_t min) { return expectInteger(min, std::numeric_limits<uint64_t>::max()); }

template <typename Value>
CLI::Option& addValue(CLI::App& command, const char* names, const char* value, Value& target, const char* description) {
    return *command.add_option(names, target, description)->type_name(value);
}

/// A file by its name, "-" or an option that may be left out.
template <typename Value>
CLI::Option& addFile(CLI::App& command, const char* names, Value& target, const char* description) {
    return *addValue(command, names, "FILE", target, description).check(expectName("FILE"));
}

void addFlag(CLI::App& command, const char* names, bool& target, const char* description) {
    command.add_flag(names, target, description)->disable_flag_override();
}

void addInputOptions(CLI::App& command, RunOptions& options) {
    addFile(command, "FILE", options.inputs, "Files of events; none or - is standard input");
    addFile(command, "--device", options.device, "Run on the device that FILE describes");
    addFile(command, "--schema", options.schema, "Classify events by the event schema in FILE");
}

void addOutputOptions(CLI::App& command, RunOptions& options) {
    addFile(command, "-o,--output", options.output, "Write the events to FILE instead of standard output");
    addFile(command, "--rejects", options.rejects, "Write bad lines to FILE, unchanged");
    addFile(command, "--drops", options.drops, "Write dropped events to FILE, each with the reason");
    addFile(command, "--monitor-events", options.monitorEvents, "Write what the pipeline reports to FILE");
    addFile(command, "--trace", options.trace, "Write a trace of the pipeline to FILE, for the Perfetto UI");
    addFile(command, "--report", options.report, "Write a page that shows the run to FILE");
    CLI::Option* report = command.get_option("--report");
    addValue(command, "--report-events", "N", options.reportEvents,
             "Show the journeys of the first N events on that page, 200 if absent, 0 for none")
        .check(expectCount(0))
        ->needs(report);
}

/// By their long names, without the dashes.
std::set<std::string> givenOptionsOf(const CLI::App& command) {
    std::set<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        if (option->nonpositional() && option->count() > 0) names.insert(option->get_single_name());
    }
    return names;
}

/// The command that was called, as far as it was understood.
const CLI::App& calledCommand(const CLI::App& tool) {
    const std::vector<CLI::App*> called = tool.get_subcommands();
    return called.empty() ? tool : calledCommand(*called.front());
}

std::string callOf(const CLI::App& command) {
    return command.get_parent() ? callOf(*command.get_parent()) + " " + command.get_name() : command.get_name();
}

Argument describeArgument(const CLI::Option& option) {
    const bool isPositional = option.get_positional();
    const int maxWords = option.get_items_expected_max();
    Argument argument;
    for (const std::string& name : option.get_snames()) argument.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) argument.names.push_back("--" + name);
    if (maxWords > 0) argument.value = isPositional ? option.get_name(/*positional=*/true) : option.get_type_name();
    argument.description = option.get_description();
    argument.isRequired = option.get_required();
    argument.takesRest = isPositional && maxWords > 1;
    return argument;
}

/// The command and all below it.
Command describeCommand(const CLI::App& app) {
    Command command;
    command.call = callOf(app);
    for (const CLI::Option* option : app.get_options()) {
        (option->get_positional() ? command.positionals : command.options).push_back(describeArgument(*option));
    }
    for (const CLI::App* below : app.get_subcommands(nullptr)) command.subcommands.push_back(describeCommand(*below));
    return command;
}

/// Speaks of the first word that nobody knows.
std::string describeUnexpected(const CLI::App& app) {
    for (const std::string& word : app.remaining()) {
        if (word != "--") return describeUnexpected(word, describeCommand(app));
    }
    return describeUnexpected(*app.get_subcommands().at(0));
}

/// The error bears the name of its option only in its text, at the beginning.
std::string describeMismatch(const CLI::App& command, const CLI::ArgumentMismatch& error) {
    const std::string_view text = error.what();
    const std::string word(text.substr(0, text.find_first_of(": ")));
    const CLI::Option* option = nullptr;
    // That of a flag stands there without its dashes.
    for (const char* dashes : {"", "-", "--"}) {
        if (!option) option = command.get_option_no_throw(dashes + word);
    }
    if (!option) return std::string(text);
    const std::string name = option->get_name();
    const std::string value = describeArgument(*option).value;
    if (value.empty()) return name + ": expected no value";
    if (option->count() > 1 && option->get_items_expected_max() == 1)
        return name + ": expected once, not " + std::to_string(option->count()) + " times";
    return name + ": expected a value, " + value + ", behind it";
}

/// On standard output, whose failure counts.
ExitStatus print(const std::string& text) {
    Console console(/*quiet=*/false);
    const bool printed = console.attempt([&] {
        OutputFile output("-");
        output.write(text);
        output.close();
    });
    return printed ? ExitStatus::Success : ExitStatus::Unusable;
}

/// What can be asked for, and what was. To be run once.
class CommandLine {
public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    ExitStatus run(int argc, const char* const* argv);

private:
    void addRun();
    void addExplain();
    void addSchema();
    void addInit();
    CLI::App& addCommand(CLI::App& parent, const std::string& name, std::function<ExitStatus()> action);

    CLI::App tool_{"", "telemetry-replay"};
    bool wantsManPage_ = false;
    bool wantsBashCompletion_ = false;
    RunOptions run_;
    ExplainOptions explain_;
    std::string schemaFile_;
    std::vector<std::string> schemaNames_;
    std::string newDirectory_;
    std::function<ExitStatus()> action_;  // none until a command has been parsed
};

CommandLine::CommandLine() {
    tool_.set_help_flag("-h,--help", "Print help and stop");
    tool_.set_version_flag("--version", "telemetry-replay " TELEMETRY_REPLAY_VERSION, "Print the version and stop");
    addFlag(tool_, "--man-page", wantsManPage_, "Print the manual page, for man(1), and stop");
    addFlag(tool_, "--bash-completion", wantsBashCompletion_,
            "Print the script that makes bash complete calls, and stop");
    tool_.require_subcommand(0, 1);
    addRun();
    addExplain();
    addSchema();
    addInit();
}

CLI::App& CommandLine::addCommand(CLI::App& parent, const std::string& name, std::function<ExitStatus()> action) {
    CLI::App* command = parent.add_subcommand(name);
    if (action) command->callback([this, action = std::move(action)] { action_ = action; });
    return *command;
}

void CommandLine::addRun() {
    CLI::App& command = addCommand(tool_, "run", [this] {
        return run_.printConfig ? printConfigCommand(run_, givenOptionsOf(*tool_.get_subcommand("run")))
                                : runCommand(run_);
    });
    addInputOptions(command, run_);
    addFile(command, "--store", run_.store,
            "Keep sequence numbers and the event schema from run to run in FILE, an SQLite database");
    addFile(command, "--expect", run_.expectations, "Check what becomes of the events against FILE");
    addOutputOptions(command, run_);
    addValue(command, "--threads", "N", run_.threads,
             "Read and write events on N threads, from 1 to 64, 1 if absent; the output is the same")
        .check(expectInteger(1, kMaxThreads));
    addFlag(command, "--strict", run_.strict, "Stop at the first bad line; there is one thread then");
    addFlag(command, "--print-config", run_.printConfig,
            "Print the effective configuration and where each part comes from, and stop");
    addFlag(command, "-q,--quiet", run_.quiet, "No warnings, no status line, no summary");
}

void CommandLine::addExplain() {
    CLI::App& command = addCommand(tool_, "explain", [this] { return explainCommand(explain_); });
    addInputOptions(command, explain_.run);
    ExplainChoice& choice = explain_.choice;
    addValue(command, "--line", "N", choice.lines, "Explain the event on line N; can be given several times")
        .allow_extra_args(false)
        ->check(expectCount(1));
    addValue(command, "--name", "NAME", choice.names, "Explain events of this name; can be given several times")
        .allow_extra_args(false);
    addValue(command, "--first", "N", choice.first, "Explain only the first N of these").check(expectCount(1));
    addFile(command, "-o,--output", explain_.run.output, "Write to FILE instead of standard output");
    addFlag(command, "--json", explain_.json, "Write JSON instead of text");
}

void CommandLine::addSchema() {
    CLI::App& schema = addCommand(tool_, "schema", {});
    schema.require_subcommand(0, 1);
    const auto add = [&](const char* name, std::function<ExitStatus()> action) -> CLI::App& {
        CLI::App& command = addCommand(schema, name, std::move(action));
        addFile(command, "FILE", schemaFile_, "The schema; - is standard input").required();
        return command;
    };
    add("check", [this] { return checkSchemaCommand(schemaFile_); });
    add("lookup", [this] { return lookUpSchemaCommand(schemaFile_, schemaNames_); })
        .add_option("NAME", schemaNames_, "String identifiers of events")
        ->required();
}

void CommandLine::addInit() {
    CLI::App& command = addCommand(tool_, "init", [this] { return initCommand(newDirectory_); });
    addValue(command, "DIR", "DIR", newDirectory_, "The directory; it is created if there is none")
        .required()
        ->check(expectName("DIR"));
}

ExitStatus CommandLine::run(int argc, const char* const* argv) {
    if (const auto name = findEmptyValue({argv, static_cast<size_t>(argc)})) {
        return reportWrongCall(callOf(tool_), *name + ": expected a value behind \"=\"");
    }
    try {
        tool_.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return print(formatHelp(describeCommand(calledCommand(tool_))));
    } catch (const CLI::CallForVersion& version) {
        return print(std::string(version.what()) + "\n");
    } catch (const CLI::ExtrasError&) {
        return reportWrongCall(callOf(calledCommand(tool_)), describeUnexpected(tool_));
    } catch (const CLI::ArgumentMismatch& error) {
        return reportWrongCall(callOf(calledCommand(tool_)), describeMismatch(calledCommand(tool_), error));
    } catch (const CLI::ParseError& error) {
        return reportWrongCall(callOf(calledCommand(tool_)), error.what());
    }
    if (wantsManPage_) return print(formatManPage(describeCommand(tool_)));
    if (wantsBashCompletion_) return print(formatBashCompletion(describeCommand(tool_)));
    return action_ ? action_() : reportMissingSubcommand(describeCommand(calledCommand(tool_)));
}

}  // namespace

ExitStatus runCommandLine(int argc, const char* const* argv) { return CommandLine().run(argc, argv); }

}  // namespace Velo::OS::Telemetry::replay
