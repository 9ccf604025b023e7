#include <CLI/CLI.hpp>
#include <charconv>
#include <csignal>
#include <functional>
#include <sstream>
#include <string>

#include "replay/Console.h"
#include "replay/ExplainCommand.h"
#include "replay/FileDescriptor.h"
#include "replay/FileError.h"
#include "replay/OutputFile.h"
#include "replay/RunCommand.h"
#include "replay/SchemaCommand.h"

namespace {

using namespace Velo::OS::Telemetry::replay;

constexpr char kRunDescription[] = "Runs events through the pipeline and writes what becomes of them.";

constexpr char kRunFooter[] = R"(
Input: one JSON object a line.
  name      string, required
  uid       unsigned 32-bit integer, 1000 if absent
  data      object, the payload of a JSON event; or else:
  bundle    object, the payload of a bundle event: integers become ints or longs,
            numbers with a fraction or exponent doubles, arrays of strings string
            vectors, other arrays and objects nested bundles
  realtime  true or false, for bundle events
  format    "json", "libtelemetry", "osndk", or "atom" with atom_id, for JSON events

The members dropped and reported_at, which this tool writes, are ignored.

Output: one JSON object a line with name, uid, identifier, data and header.

Drops: each line of a dropped event as it was read, with one more member, dropped:
place (FILE:LINE), guard, its counter (null if it has none), reason, and what the
decision rested on. The file can be fed back in, but for lines that are now too long.
  state.disabled           telemetry was off at realtime_ms, when the event was created
                           (0 if it does not say)
  pathway.generic_atom     format, which no event may have
  pathway.in_verification  format, which no event may have while it is verified
  checkpoint.account       uid and user whose account is held
  filter.no_consent        category (not essential), uid and user who has not consented,
                           consent and data_use_consent of that user, identifier (the
                           name if absent)
  filter.no_data_use_consent  the same, where it is the consent to data use that counts
  filter.needs_review, filter.uncategorized, filter.invalid
                           the same, where none would help
  rate_limit.exceeded      identifier (the name if absent), limit in window_ms (null: it
                           never ends), count of events in the window with this one
  dynamic.rule             rule, which keeps no such event
  dynamic.sampling         rule, and the draw that was not below its sample_rate

Monitor events: what the pipeline reports about events, as lines of input with one
more member, reported_at (FILE:LINE). Its times are those of the event it is about,
after which it is logged as an event of its own, and so are reports about reports,
eight deep.

Device: one JSON object; whatever is absent is unknown to the pipeline.
  device_ids         {"telemetry": string, "morlek": string}
  system_properties  {NAME: string}
  users              {ANDROID_USER: {"managed_mode": integer, "account_mode": bool,
                      "consent": bool, "data_use_consent": bool, "parvi_account": bool}}
  identities         {UID: string}, the id of the user for whom the uid runs
  packages           {PACKAGE: {UID: {"version_name": string, "version_code": integer}}}
  foreground         {"package": string, "version_name": string}
  sessions           {"attach_to_all_events": bool, "legacy": {ANDROID_USER: value},
                      "v2": [{"since_ms": integer, "context": string}]}
  app_overrides      {UID: {APP_ID: {"id": string,
                      "sdk_app_package_version_name": string,
                      "sdk_app_package_version_code": integer}}}
  telemetry_enabled  bool, true if absent; or [{"since_ms": integer, "enabled": bool}]
  feature_gates      {"arvo_mobile_telemetry_intake_monitor": bool}, whether the intake of
                     events is monitored; false if absent
  events_in_verification  [NAME]
  checkpointed_uids  [UID]
  filter             {"enabled": bool, "discretionary_packages": [PACKAGE]}; enabled, it
                     keeps the events that the event schema calls essential, those that
                     it calls non-essential if the user gives the consent that they
                     need, and what these packages log
  rate_limits        {"default": LIMIT, "identifiers": {IDENTIFIER: LIMIT}}; a LIMIT is
                     {"refill_count": integer, "max_events": integer,
                      "window_seconds": integer}, of which 9000, 9000 and 60 may be
                     absent; a window that alone differs has no effect; atoms are not
                     limited; windows pass by this machine's clock, however fast a
                     day is replayed
  dynamic_telemetry  {"configs": {ANDROID_USER: string}, "seed": integer,
                      "events": {NAME: {"keep": bool, "sample_rate": number}},
                      "records": [{"at_ms": integer, "guard": LOG, "monitor": LOG,
                                   "fetch": {"active_config_id": string,
                                             "fetched_config_id": string,
                                             "finished_us": integer,
                                             "outcome": string}}]}; each NAME has its
                     own draws, which repeat with the seed; events without a rule are
                     all kept; records are what the service has gathered by then to be
                     reported, and each of the three may be absent; a LOG is
                     {"config_id": string, "logging_duration_ms": integer,
                      "metrics": {NAME: integer}}, that of a monitor also has
                     "processed_event_name"; an outcome is "noChange",
                     "persistSuccess", "persistError", "parseError", "endpointError"
                     or "userTokenEmpty"
  clock              {"adjusted": bool, "time_ms": integer, "boot_time_ms": integer},
                     the wall-clock time (monotonic if not adjusted) and the time
                     since boot at which to stand still; else this machine's clocks run

A bad line, no event or one that the pipeline cannot process, does not stop the run.
It goes unchanged to the file that --rejects names, and standard error says FILE:LINE:
what is wrong with which field.

Exit status: 0; 1 if there was a bad line; 2 for a wrong call or a file that
cannot be opened, read or written.

Examples:
  telemetry-replay run day.jsonl --device device.json -o out.jsonl --rejects bad.jsonl
  telemetry-replay run day.jsonl --device device.json -o /dev/null --drops drops.jsonl
  telemetry-replay run --trace day.trace day.jsonl > out.jsonl
  echo '{"name":"launch","data":{"k":1}}' | telemetry-replay run)";

constexpr char kExplainDescription[] = "Shows what each stage of the pipeline does with chosen events.";

constexpr char kExplainFooter[] = R"(
An event is chosen if every option that is given applies to it: it stands on one of
the lines of its file, bears one of the names, is among the first N of these. Monitor
events themselves are only chosen by name. All events before a chosen one are processed
too, for what becomes of it may hang on them: sequence numbers start at 1, and windows
of rate limits pass by this machine's clock, also while a pager makes the tool wait.

Text: a headline with the event's name, place, uid and format; then, in order, each
stage and
  observed, passed, applied   what the stage did: it is a monitor, guard or applier
  reported NAME               a monitor event that the stage reported, and its members
  + FIELD VALUE               what the stage has added
  ~ FIELD OLD -> NEW          what it has changed; header.FIELD is in the batch header,
                              event.uid the event's own
  dropped: REASON             and because of what; run --help has them all
  failed: REASON              the event is bad: the stage cannot process it
  blocked                     this applier must not touch the event
  not reached                 by an event that was dropped or bad
then the event as run would write it, if it was kept. There is colour on a terminal,
unless the environment has NO_COLOR.

JSON: one object a line with place (reported_at for a monitor event), name, uid,
format, identifier, data (before the first stage), stages and output, or dropped or bad.
A stage has name, kind, within (the applier that runs it), fate (the words above, or
not_reached), reports and changes; a report has name, uid and bundle; a change has
field, in ("data", "header", or "event" for its uid), old (absent if new) and new.

Input, device and schema are those of run.

Exit status: 0; 1 if no event was chosen, or a line that may be was bad; 2 for a wrong
call or a file that cannot be opened, read or written.

Examples:
  telemetry-replay explain day.jsonl --device device.json --line 12
  telemetry-replay explain day.jsonl --device device.json --name app_launch --first 3
  telemetry-replay explain day.jsonl --json | jq .stages)";

constexpr char kSchemaDescription[] = "Says what devices make of an event schema.";
constexpr char kCheckDescription[] = "Names what in an event schema would be dropped or misread.";
constexpr char kLookupDescription[] = "Says how an event schema classifies events.";

constexpr char kSchemaFooter[] = R"(
Schema: one JSON object.
  timestamp               unsigned 64-bit integer
  salt                    string, hashed behind each name
  settings_to_categories  {"ESSENTIAL": [CODE], "NON_ESSENTIAL": [CODE],
                           "NEEDS_REVIEW": [CODE],
                           "NON_ESSENTIAL_WITH_OTHER_CONSENT": [CODE]}; the last two
                          have exactly one
  allowed_events, allowed_campaigns
                          [{"identifier": HASH, "categories": [CODE],
                            "extra_data_categories": {"granular": [HASH]}}], the hashes
                          of an event's identifier and of a purpose and the identifier

Exit status: 0; 1 if the check finds anything; 2 for a wrong call or a file that
cannot be used.

Examples:
  telemetry-replay schema check schema.json
  telemetry-replay schema lookup schema.json app_launch odt_4102)";

constexpr char kFooter[] = R"(
Examples:
  telemetry-replay run day.jsonl -o out.jsonl
  telemetry-replay run --help
  telemetry-replay explain day.jsonl --line 12
  telemetry-replay schema --help)";

/// What was asked for on the command line.
using Command = std::function<ExitStatus()>;

void addInputOptions(CLI::App& command, RunOptions& options) {
    command.add_option("FILE", options.inputs, "Files of events; none or - is standard input")->type_name("");
    command.add_option("--device", options.device, "Run on the device that FILE describes")->type_name("FILE");
    command.add_option("--schema", options.schema, "Classify events by the event schema in FILE")->type_name("FILE");
}

/// What is wrong with the argument of an option, if anything.
std::string expectPositive(const std::string& text) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isPositive = error == std::errc() && end == text.data() + text.size() && number > 0;
    return isPositive ? "" : "expected a positive integer";
}

void addRunCommand(CLI::App& app, RunOptions& options, Command& command) {
    CLI::App* run = app.add_subcommand("run", kRunDescription);
    addInputOptions(*run, options);
    run->add_option("--store", options.store,
                    "Keep sequence numbers and the event schema from run to run in FILE, an SQLite database")
        ->type_name("FILE");
    run->add_option("-o,--output", options.output, "Write the events to FILE instead of standard output")
        ->type_name("FILE");
    run->add_option("--rejects", options.rejects, "Write bad lines to FILE, unchanged")->type_name("FILE");
    run->add_option("--drops", options.drops, "Write dropped events to FILE, each with the reason")->type_name("FILE");
    run->add_option("--monitor-events", options.monitorEvents, "Write what the pipeline reports to FILE")
        ->type_name("FILE");
    run->add_option("--trace", options.trace, "Write a trace of the pipeline to FILE, for the Perfetto UI")
        ->type_name("FILE");
    run->add_option("--threads", options.threads, "Decode and write with N threads; the output is the same")
        ->type_name("N")
        ->check(expectPositive);
    run->add_option("--expect", options.expectations, "Check what becomes of the events against FILE")
        ->type_name("FILE");
    run->add_option("--report", options.report, "Write a page that shows the run to FILE")->type_name("FILE");
    run->add_option("--report-events", options.reportEvents, "The journeys of the first N events are in it")
        ->type_name("N");
    run->add_flag("--print-config", options.printConfig, "Print what the run would go by, and stop");
    run->add_flag("--strict", options.strict, "Stop at the first bad line");
    run->add_flag("-q,--quiet", options.quiet, "No warnings, no progress bar, no summary");
    run->footer(kRunFooter);
    run->callback([&] { command = [&] { return runCommand(options); }; });
}

void addExplainCommand(CLI::App& app, ExplainOptions& options, Command& command) {
    CLI::App* explain = app.add_subcommand("explain", kExplainDescription);
    addInputOptions(*explain, options.run);
    explain->add_option("--line", options.choice.lines, "Explain the event on line N; can be given several times")
        ->type_name("N")
        ->allow_extra_args(false)
        ->check(expectPositive);
    explain->add_option("--name", options.choice.names, "Explain events of this name; can be given several times")
        ->type_name("NAME")
        ->allow_extra_args(false);
    explain->add_option("--first", options.choice.first, "Explain only the first N of these")
        ->type_name("N")
        ->check(expectPositive);
    explain->add_option("-o,--output", options.run.output, "Write to FILE instead of standard output")
        ->type_name("FILE");
    explain->add_flag("--json", options.json, "Write JSON instead of text");
    explain->footer(kExplainFooter);
    explain->callback([&] { command = [&] { return explainCommand(options); }; });
}

struct SchemaOptions {
    std::string file;
    std::vector<std::string> names;
};

void addSchemaCommand(CLI::App& app, SchemaOptions& options, Command& command) {
    CLI::App* schema = app.add_subcommand("schema", kSchemaDescription);
    schema->require_subcommand(1);
    schema->footer(kSchemaFooter);
    const auto add = [&](const char* name, const char* description, const Command& action) {
        CLI::App* subcommand = schema->add_subcommand(name, description);
        subcommand->add_option("FILE", options.file, "The schema; - is standard input")->type_name("")->required();
        subcommand->callback([&command, action] { command = action; });
        return subcommand;
    };
    add("check", kCheckDescription, [&] { return checkSchemaCommand(options.file); });
    add("lookup", kLookupDescription, [&] { return lookUpSchemaCommand(options.file, options.names); })
        ->add_option("NAME", options.names, "String identifiers of events")
        ->type_name("")
        ->required();
}

/// Help and version go to standard output, whose failure counts; anything else is a wrong call.
ExitStatus report(const CLI::App& app, const CLI::ParseError& error) {
    Console console(false);
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
        console.error(error.what());
        console.error("Run with --help for more information.");
        return ExitStatus::Unusable;
    }
    std::ostringstream text;
    app.exit(error, text, text);
    try {
        OutputFile output("-");
        output.write(text.str());
        output.close();
        return ExitStatus::Success;
    } catch (const FileError& failure) {
        console.error(failure.what());
        return ExitStatus::Unusable;
    }
}

ExitStatus runTool(int argc, char** argv) {
    CLI::App app("Replays telemetry events on a desk, through the pipeline that devices run.", "telemetry-replay");
    RunOptions runOptions;
    ExplainOptions explainOptions;
    SchemaOptions schemaOptions;
    Command command;
    app.set_version_flag("--version", "telemetry-replay " TELEMETRY_REPLAY_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);
    addRunCommand(app, runOptions, command);
    addExplainCommand(app, explainOptions, command);
    addSchemaCommand(app, schemaOptions, command);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return report(app, error);
    }
    return command();
}

}  // namespace

int main(int argc, char** argv) {
    // A closed pipe or a file grown to its limit is then an error of the write that meets it, with a message.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    occupyStandardDescriptors();
    return static_cast<int>(runTool(argc, argv));
}
