#include "replay/HelpTexts.h"

#include <algorithm>
#include <iterator>

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr HelpBlock text(std::string_view text) { return {HelpBlock::Kind::Paragraph, {}, {}, text}; }

constexpr HelpBlock item(std::string_view term, std::string_view text) {
    return {HelpBlock::Kind::Definition, term, {}, text};
}

constexpr HelpBlock item(std::string_view term, std::string_view shape, std::string_view text) {
    return {HelpBlock::Kind::Definition, term, shape, text};
}

constexpr HelpBlock example(std::string_view purpose, std::string_view command) {
    return {HelpBlock::Kind::Example, purpose, {}, command};
}

constexpr HelpBlock kInput[] = {
    text("JSON Lines: one JSON object a line, in UTF-8. Blank lines are passed over."),
    item("name", "string, required"),
    item("uid", "unsigned 32-bit integer, 1000 if absent"),
    item("data", "object, the payload of a JSON event; or else:"),
    item("bundle",
         "object, the payload of a bundle event: integers become ints or longs, numbers with a fraction or exponent "
         "doubles, arrays of strings string vectors, other arrays and objects nested bundles"),
    item("realtime", "true or false, for bundle events"),
    item("format", R"("json", "libtelemetry", "osndk", or "atom" with atom_id, for JSON events)"),
    item("//", "string, a comment: ignored here as in the other files that are read"),
    text("The members dropped and reported_at, which this tool writes, are ignored too."),
    text("The input may be a live stream: run - reads standard input and writes what becomes of each event as soon as "
         "its line is there."),
};

constexpr HelpBlock kBadLines[] = {
    text("A bad line, no event or one that the pipeline cannot process, does not stop the run. It goes unchanged to "
         "the file that --rejects names, and standard error says FILE:LINE: what is wrong with which field."),
};

constexpr HelpBlock kOutput[] = {
    text("One JSON object a line with name, uid, identifier, data and header."),
};

constexpr HelpBlock kDrops[] = {
    text("Each line of a dropped event as it was read, with one more member, dropped: place (FILE:LINE), guard, its "
         "counter (null if it has none), reason, and what the decision rested on. The file can be fed back in, but for "
         "lines that are now too long. The reasons, each with what it rests on:"),
    item("state.disabled", "telemetry was off at realtime_ms, when the event was created (0 if it does not say)"),
    item("pathway.generic_atom", "format, which no event may have"),
    item("pathway.in_verification", "format, which no event may have while it is verified"),
    item("checkpoint.account", "uid and user whose account is held"),
    item("filter.no_consent",
         "category (not essential), uid and user who has not consented, consent and data_use_consent of that user, "
         "identifier (the name if absent)"),
    item("filter.no_data_use_consent", "the same, where it is the consent to data use that counts"),
    item("filter.needs_review, filter.uncategorized, filter.invalid", "the same, where none would help"),
    item("rate_limit.exceeded",
         "identifier (the name if absent), limit in window_ms (null: it never ends), count of events in the window "
         "with this one"),
    item("dynamic.rule", "rule, which keeps no such event"),
    item("dynamic.sampling", "rule, and the draw that was not below its sample_rate"),
};

constexpr HelpBlock kMonitorEvents[] = {
    text("What the pipeline reports about events, as lines of input with one more member, reported_at (FILE:LINE). Its "
         "times are those of the event it is about, after which it is logged as an event of its own, and so are "
         "reports about reports, eight deep."),
};

constexpr HelpBlock kDevice[] = {
    text("One JSON object; whatever is absent is unknown to the pipeline. A member named // is a comment, where names "
         "are fixed. LIMIT, LOG and FETCH are explained in their turn."),
    item("device_ids", R"({"telemetry": string, "morlek": string})", {}),
    item("system_properties", "{NAME: string}", {}),
    item("users",
         "{ANDROID_USER: {\"managed_mode\": integer,\n"
         "                \"account_mode\": bool, \"consent\": bool,\n"
         "                \"data_use_consent\": bool,\n"
         "                \"parvi_account\": bool}}",
         {}),
    item("identities", "{UID: string}", "the id of the user for whom the uid runs"),
    item("packages",
         "{PACKAGE: {UID: {\"version_name\": string,\n"
         "                 \"version_code\": integer}}}",
         {}),
    item("foreground", R"({"package": string, "version_name": string})", {}),
    item("sessions",
         "{\"attach_to_all_events\": bool,\n"
         " \"legacy\": {ANDROID_USER: value},\n"
         " \"v2\": [{\"since_ms\": integer, \"context\": string}]}",
         {}),
    item("app_overrides",
         "{UID: {APP_ID: {\"id\": string,\n"
         "                \"sdk_app_package_version_name\": string,\n"
         "                \"sdk_app_package_version_code\": integer}}}",
         {}),
    item("telemetry_enabled", R"(bool or [{"since_ms": integer, "enabled": bool}])", "true if absent"),
    item("feature_gates", R"({"arvo_mobile_telemetry_intake_monitor": bool})",
         "whether the intake of events is monitored; false if absent"),
    item("events_in_verification", "[NAME]", {}),
    item("checkpointed_uids", "[UID]", {}),
    item("filter",
         "{\"enabled\": bool,\n"
         " \"discretionary_packages\": [PACKAGE]}",
         "enabled, it keeps the events that the event schema calls essential, those that it calls non-essential if the "
         "user gives the consent that they need, and what these packages log"),
    item("rate_limits", R"({"default": LIMIT, "identifiers": {IDENTIFIER: LIMIT}})",
         "atoms are not limited; a window beside two counts of 9000 has no effect; windows pass by this machine's "
         "clock, "
         "however fast a day is replayed"),
    item("LIMIT",
         "{\"refill_count\": integer, \"max_events\": integer,\n"
         " \"window_seconds\": integer}",
         "of which 9000, 9000 and 60 may be absent"),
    item("dynamic_telemetry",
         "{\"configs\": {ANDROID_USER: string}, \"seed\": integer,\n"
         " \"events\": {NAME: {\"keep\": bool, \"sample_rate\": number}},\n"
         " \"records\": [{\"at_ms\": integer, \"guard\": LOG,\n"
         "              \"monitor\": LOG, \"fetch\": FETCH}]}",
         "each NAME has its own draws, which repeat with the seed; events without a rule are all kept; records are "
         "what the service has gathered by then to be reported, and guard, monitor and fetch may each be absent"),
    item("LOG",
         "{\"config_id\": string,\n"
         " \"logging_duration_ms\": integer,\n"
         " \"metrics\": {NAME: integer}}",
         "that of a monitor also has \"processed_event_name\""),
    item("FETCH",
         "{\"active_config_id\": string,\n"
         " \"fetched_config_id\": string, \"finished_us\": integer,\n"
         " \"outcome\": string}",
         "an outcome is \"noChange\", \"persistSuccess\", \"persistError\", \"parseError\", \"endpointError\" or "
         "\"userTokenEmpty\""),
    item("clock",
         "{\"adjusted\": bool, \"time_ms\": integer,\n"
         " \"boot_time_ms\": integer}",
         "the wall-clock time (monotonic if not adjusted) and the time since boot at which to stand still; else this "
         "machine's clocks run"),
};

constexpr HelpBlock kExpectations[] = {
    text("One JSON object that says what must become of the events, monitor events included. Standard error says what "
         "does not hold, and the exit status is 1. A member named // is a comment, where names are fixed."),
    item("events",
         "{GLOB: {\"logged\": COUNT, \"kept\": COUNT, \"bad\": COUNT,\n"
         "        \"dropped\": COUNT or {REASON: COUNT},\n"
         "        \"data\": {NAME: FIELD}, \"header\": {NAME: FIELD}}}",
         "how many events are logged, kept, bad and dropped, and what stands in the data and header of all that are "
         "kept; each may be absent; there must be such events, unless only counts are given and all are 0"),
    item("GLOB", "names of events, in which * stands for any characters and ? for one; at most 1024 bytes"),
    item("COUNT", R"(integer or {"min": integer, "max": integer})", "either may be absent"),
    item("REASON", "the reason of drops or the name of their guard; min and max here are those of all drops"),
    item("FIELD",
         "{\"present\": bool}, {\"type\": TYPE}, {\"value\": VALUE}\n"
         "or {\"one_of\": [VALUE]}",
         "a TYPE is \"null\", \"boolean\", \"integer\", \"number\", \"string\", \"array\" or \"object\""),
};

constexpr HelpBlock kSchema[] = {
    text("One JSON object; a member named // is a comment, where names are fixed."),
    item("timestamp", "unsigned 64-bit integer"),
    item("salt", "string, hashed behind each name"),
    item("settings_to_categories",
         "{\"ESSENTIAL\": [CODE], \"NON_ESSENTIAL\": [CODE],\n"
         " \"NEEDS_REVIEW\": [CODE],\n"
         " \"NON_ESSENTIAL_WITH_OTHER_CONSENT\": [CODE]}",
         "the last two have exactly one"),
    item("allowed_events, allowed_campaigns",
         "[{\"identifier\": HASH, \"categories\": [CODE],\n"
         "  \"extra_data_categories\": {\"granular\": [HASH]}}]",
         "the hashes of an event's identifier and of a purpose and the identifier"),
};

constexpr HelpBlock kExitStatus[] = {
    item("0", "all went well"),
    item("1",
         "something in the input was bad: run met a bad line, or its events are not as expected; explain found no "
         "event to explain, or a bad line that may be one; schema check found anything"),
    item("2",
         "a wrong call, a file that cannot be opened, read or written, too little memory, or expectations that could "
         "not be checked"),
    item("130, 143",
         "ended by Ctrl-C or SIGTERM; the outputs are complete so far, and standard error names the last line that is "
         "in them"),
};

constexpr HelpBlock kEnvironment[] = {
    item("NO_COLOR", "if it is set and not empty, explain writes no colour to a terminal"),
};

constexpr HelpSection kInputSection{"Input", kInput};
constexpr HelpSection kBadLinesSection{"Bad lines", kBadLines};
constexpr HelpSection kOutputSection{"Output", kOutput};
constexpr HelpSection kDropsSection{"Drops", kDrops};
constexpr HelpSection kMonitorEventsSection{"Monitor events", kMonitorEvents};
constexpr HelpSection kDeviceSection{"Device", kDevice};
constexpr HelpSection kSchemaSection{"Schema", kSchema};
constexpr HelpSection kExpectationsSection{"Expectations", kExpectations};
constexpr HelpSection kExitStatusSection{"Exit status", kExitStatus};
constexpr HelpSection kEnvironmentSection{"Environment", kEnvironment};

constexpr HelpSection kReferenceSections[] = {
    kInputSection,  kBadLinesSection, kOutputSection,       kDropsSection,      kMonitorEventsSection,
    kDeviceSection, kSchemaSection,   kExpectationsSection, kExitStatusSection, kEnvironmentSection,
};

constexpr HelpBlock kDescription[] = {
    text("telemetry-replay runs captured events through the very pipeline that a device runs: monitors observe each "
         "event, guards may drop it, appliers enrich it. What becomes of the events is written as JSON Lines, and of "
         "each dropped one which guard dropped it, and why."),
    text("What the pipeline asks of a device - its ids, users, packages, settings, clock - comes from a file that "
         "describes one."),
};
constexpr HelpSection kToolOwn[] = {{"Description", kDescription}};
constexpr HelpBlock kToolExamples[] = {
    example("Write files to begin with:", "telemetry-replay init desk"),
    example("What becomes of the events of a day:", "telemetry-replay run day.jsonl --device device.json -o out.jsonl"),
    example("What each stage does with the event on line 12:", "telemetry-replay explain day.jsonl --line 12"),
    example("All there is to know about a command:", "telemetry-replay run --help"),
    example("All there is to know:", "telemetry-replay --man-page | man -l -"),
    example("Let this bash complete calls:", "source <(telemetry-replay --bash-completion)"),
};

constexpr HelpSection kRunReference[] = {
    kInputSection,         kBadLinesSection, kOutputSection,       kDropsSection,
    kMonitorEventsSection, kDeviceSection,   kExpectationsSection, kExitStatusSection,
};
constexpr HelpBlock kRunExamples[] = {
    example("Replay a day on a device, and keep bad lines apart:",
            "telemetry-replay run day.jsonl --device device.json \\\n    -o out.jsonl --rejects bad.jsonl"),
    example("See what is dropped, and why:",
            "telemetry-replay run day.jsonl --device device.json \\\n    -o /dev/null --drops drops.jsonl"),
    example("Check what becomes of the events, and show it on a page:",
            "telemetry-replay run day.jsonl -o /dev/null \\\n    --expect expect.json --report report.html"),
    example("Record each stage, for the Perfetto UI:", "telemetry-replay run --trace day.trace day.jsonl > out.jsonl"),
    example("Follow a live stream:", "tail -f events.jsonl | telemetry-replay run -"),
    example("Try a single event:", R"(echo '{"name":"launch","data":{"k":1}}' | telemetry-replay run)"),
};

constexpr HelpBlock kChoice[] = {
    text("An event is chosen if every option that is given applies to it: it stands on one of the lines of its file, "
         "bears one of the names, is among the first N of these. Monitor events themselves are only chosen by name. "
         "All events before a chosen one are processed too, for what becomes of it may hang on them: sequence numbers "
         "start at 1, and windows of rate limits pass by this machine's clock, also while a pager makes the tool "
         "wait."),
    text("Input, device and schema are those of run."),
};
constexpr HelpBlock kText[] = {
    text("A headline with the event's name, place, uid and format; then, in order, each stage and"),
    item("observed, passed, applied", "what the stage did: it is a monitor, guard or applier"),
    item("reported NAME", "a monitor event that the stage reported, and its members"),
    item("+ FIELD VALUE", "what the stage has added"),
    item("~ FIELD OLD -> NEW", "what it has changed; header.FIELD is in the batch header, event.uid the event's own"),
    item("dropped: REASON", "and because of what; run --help has them all"),
    item("failed: REASON", "the event is bad: the stage cannot process it"),
    item("blocked", "this applier must not touch the event"),
    item("not reached", "by an event that was dropped or bad"),
    text("then the event as run would write it, if it was kept. There is colour on a terminal, unless the environment "
         "has NO_COLOR."),
};
constexpr HelpBlock kJson[] = {
    text("One object a line with place (reported_at for a monitor event), name, uid, format, identifier, data (before "
         "the first stage), stages and output, or dropped or bad. A stage has name, kind, within (the applier that "
         "runs it), fate (the words above, or not_reached), reports and changes; a report has name, uid and bundle; a "
         "change has field, in (\"data\", \"header\", or \"event\" for its uid), old (absent if new) and new."),
};
constexpr HelpSection kExplainOwn[] = {{"Choice", kChoice}, {"Text", kText}, {"JSON", kJson}};
constexpr HelpSection kExplainReference[] = {kExitStatusSection, kEnvironmentSection};
constexpr HelpBlock kExplainExamples[] = {
    example("What became of the event on line 12:",
            "telemetry-replay explain day.jsonl --device device.json --line 12"),
    example("And of the first three of a name:",
            "telemetry-replay explain day.jsonl --device device.json \\\n    --name app_launch --first 3"),
    example("For other tools:", "telemetry-replay explain day.jsonl --json | jq .stages"),
};

constexpr HelpSection kSchemaReference[] = {kSchemaSection, kExitStatusSection};
constexpr HelpBlock kCheckExamples[] = {
    example("What would a device make of this schema?", "telemetry-replay schema check schema.json"),
};
constexpr HelpBlock kLookupExamples[] = {
    example("Is the event kept, and with which consent?",
            "telemetry-replay schema lookup schema.json app_launch odt_4102"),
};
constexpr HelpBlock kSchemaExamples[] = {kCheckExamples[0], kLookupExamples[0]};

constexpr HelpBlock kInitFiles[] = {
    text("device.json, schema.json and events.jsonl, with comments that say what can be changed. Nothing is "
         "overwritten: if one of them exists, none is written."),
};
constexpr HelpSection kInitOwn[] = {{"Files", kInitFiles}};
constexpr HelpSection kInitReference[] = {kExitStatusSection};
constexpr HelpBlock kInitExamples[] = {
    example("Write the files, and replay the events among them:",
            "telemetry-replay init desk\n"
            "telemetry-replay run desk/events.jsonl --device desk/device.json \\\n"
            "    --schema desk/schema.json"),
};

constexpr CommandHelp kCommands[] = {
    {"", "Replays telemetry events on a desk, through the pipeline that devices run.", kToolOwn, {}, kToolExamples},
    {"run", "Runs events through the pipeline and writes what becomes of them.", {}, kRunReference, kRunExamples},
    {"explain", "Shows what each stage of the pipeline does with chosen events.", kExplainOwn, kExplainReference,
     kExplainExamples},
    {"schema", "Says what devices make of an event schema.", {}, kSchemaReference, kSchemaExamples},
    {"schema check",
     "Names what in an event schema would be dropped or misread.",
     {},
     kSchemaReference,
     kCheckExamples},
    {"schema lookup", "Says how an event schema classifies events.", {}, kSchemaReference, kLookupExamples},
    {"init", "Writes files to begin with into a directory.", kInitOwn, kInitReference, kInitExamples},
};

}  // namespace

const CommandHelp& helpOf(std::string_view command) {
    return *std::find_if(std::begin(kCommands), std::end(kCommands),
                         [&](const CommandHelp& help) { return help.command == command; });
}

std::span<const HelpSection> referenceSections() { return kReferenceSections; }

}  // namespace Velo::OS::Telemetry::replay
