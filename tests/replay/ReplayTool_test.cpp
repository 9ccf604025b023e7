#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "replay/LineReader.h"
#include "replay/SchemaFile.h"
#include "replay/StoredKeyValues.h"
#include "replay/StoredSequenceNumbers.h"
#include "telemetry/EventSchemaHandler.h"
#include "tests/fakes/FakeStorageCache.h"
#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry::replay {

namespace fs = std::filesystem;

constexpr char kHeader[] = R"("header":{"app_id":736366014426470,"app_version":""})";
constexpr char kGoodLine[] = R"({"name":"launch","data":{"k":1}})";
const std::string kGoodOutput =
    std::string(R"({"name":"launch","uid":1000,"identifier":"launch","data":{"k":1,"realtime":false},)") + kHeader +
    "}\n";

/// The built tool, run by a shell in a folder of its own.
class ReplayTool : public testing::Test {
protected:
    ReplayTool() : folder_(fs::temp_directory_path() / ("replay_test." + std::to_string(::getpid()))) {
        fs::create_directory(folder_);
    }
    ~ReplayTool() override { fs::remove_all(folder_); }

    void write(const std::string& file, const std::string& content) {
        std::ofstream(folder_ / file, std::ios::binary) << content;
    }
    std::string read(const std::string& file) {
        std::ifstream stream(folder_ / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// The exit status of the command, in which $TOOL is the tool. Standard error goes to the file "err".
    int sh(const std::string& command) {
        const std::string script =
            "cd " + folder_.string() + " && TOOL=" TELEMETRY_REPLAY "; { " + command + "; } 2>err";
        const int status = std::system(script.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    /// The lines that are no audits of the filter.
    std::string readUnaudited(const std::string& file) {
        std::string text = read(file);
        for (size_t at = 0; (at = text.find(R"("name":"telemetry_event_filtering_audit")")) != std::string::npos;) {
            at = text.rfind('\n', at) + 1;
            text.erase(at, text.find('\n', at) + 1 - at);
        }
        return text;
    }
    /// The output without audits and without the members that stages add.
    std::string readOwn(const std::string& file) {
        std::string text = readUnaudited(file);
        for (const std::string key :
             {"__sessions_v2", "account_mode", "adjusted", "applied_sample_rate", "consent_state", "device_serial",
              "dynamic_telemetry_config_id", "event_schema_timestamp", "fg_app_package_name", "fg_app_package_version",
              "global_sequence_number", "managed_mode", "per_type_sequence_number", "sdk_app_package",
              "sdk_app_package_version_code", "sdk_app_package_version_name", "timestamp", "id", "morlek_device_id"}) {
            for (size_t at = 0; (at = text.find("\"" + key + "\":")) != std::string::npos;) {
                const size_t end = text.find_first_of(",}", at);
                text.erase(at, end - at + (text[end] == ',' ? 1 : 0));
            }
        }
        for (size_t at = 0; (at = text.find(",}")) != std::string::npos;) text.erase(at, 1);
        return text;
    }
    /// Of event names, each with its code: 1 is essential, 2 serves to personalize, 3 needs another consent, 4 review;
    /// others are unknown.
    static std::string schemaOf(const std::vector<std::pair<const char*, int>>& events) {
        const auto salted = std::make_shared<fakes::FakeStorageCache>();
        salted->values[{Store::EventSchema, "event_schema", "salt"}] = "s";
        EventSchemaHandler hashes(salted);
        Json::Value schema = fakes::parsed(R"({"timestamp":5,"salt":"s","settings_to_categories":{"ESSENTIAL":[1],
            "NON_ESSENTIAL":[2],"NON_ESSENTIAL_WITH_OTHER_CONSENT":[3],"NEEDS_REVIEW":[4]},"allowed_campaigns":[]})");
        for (const auto& [name, code] : events) {
            Json::Value& entry = schema["allowed_events"].append({});
            entry["identifier"] = hashes.getHashedEventName(name);
            entry["categories"].append(code);
            if (code != 2) continue;
            entry["extra_data_categories"]["granular"].append(hashes.getHashedEventPurpose(name, "Personalization"));
        }
        return fakes::text(schema);
    }
    static std::string summary(int read, int reported, int kept, int dropped, int bad, size_t bytes) {
        char text[512];
        std::snprintf(text, sizeof(text),
                      "%-38s %12d\n%-38s %12d\n%-38s %12d\n%-38s %12d\n%-38s %12d\n%-38s %12zu\nevents per second ",
                      "read", read, "reported", reported, "kept", kept, "dropped", dropped, "bad", bad, "bytes", bytes);
        return text;
    }

    const fs::path folder_;
};

TEST_F(ReplayTool, WritesWhatBecomesOfEachEvent) {
    write("a", std::string(kGoodLine) + "\r\n \t\r\n\n" + R"({"name":"ondemand_statsd_utl","uid":10123,)" +
                   R"("data":{"campaign_id":42,"t":"\u0000\u00e9"}})");
    write("b", R"({"name":"n\u0000\"","realtime":true,"bundle":{"v":["x"],"l":4294967296,"d":1e2}})");
    const std::string expected =
        kGoodOutput + R"({"name":"ondemand_statsd_utl","uid":10123,"identifier":"odt_42","data":{"campaign_id":42,)" +
        R"("realtime":false,"t":"\u0000\u00e9"},)" + kHeader +
        "}\n"
        R"({"name":"n\u0000\"","uid":1000,"identifier":"n\u0000\"","data":{"d":100.0,"l":4294967296,)" +
        R"("realtime":true,"v":["x"]},)" + kHeader + "}\n";
    const size_t bytes = read("a").size() + read("b").size();

    EXPECT_EQ(sh("$TOOL run a - <b >out"), 0);
    EXPECT_EQ(readOwn("out"), expected);
    EXPECT_TRUE(read("err").starts_with(summary(3, 3, 6, 0, 0, bytes))) << read("err");

    write("out", "an earlier run's output, longer than this one's" + std::string(2000, '.'));
    EXPECT_EQ(sh("$TOOL run --quiet -o out a ./b"), 0);
    EXPECT_EQ(readOwn("out"), expected);
    EXPECT_EQ(read("err"), "");
}

TEST_F(ReplayTool, KeepsBadLinesAsTheyAre) {
    const std::string longLine(3 * LineReader::kMaxLineLength, 'x');
    const std::string bad[] = {
        "{\"name\":\"\x1B\xC2\x9B\xFF\"}",
        longLine,
        "{\"n\x1B\":1}\r",
        R"({"n\u001b":1})",
        R"({"name":"\u001b[2J","bundle":{"utl_array_of_bundles":1}})",
        R"({"name":"arvo_api_permission_state_event","data":{"source":"listener","android_uid":"x"}})",
    };
    std::string input = "\xEF\xBB\xBF" + std::string(kGoodLine) + "\n";
    std::string rejects;
    for (const std::string& line : bad) {
        rejects += line + "\n";
        input += line + "\n";
    }
    input += "[]";
    rejects += "[]\n";
    write("in\x1B", input);

    EXPECT_EQ(sh("$TOOL run in* --rejects rejects >out"), 1);
    EXPECT_EQ(readOwn("out"), kGoodOutput);
    EXPECT_TRUE(read("rejects") == rejects);
    const std::string messages =
        "in\\u001b:2: not UTF-8: column 13\n"
        "in\\u001b:3: longer than 1048576 bytes\n"
        "in\\u001b:4: not JSON: column 4: control character in a string\n"
        "in\\u001b:5: n\\u001b: unknown member\n"
        "in\\u001b:6: warning: Event [name: \\u001b[2J] wasn't successfully converted to json.\n"
        "in\\u001b:6: bundle: cannot be converted to JSON\n"
        "in\\u001b:7: the pipeline cannot process it: Value is not convertible to Int.\n"
        "in\\u001b:8: expected an object\n";
    EXPECT_TRUE(read("err").starts_with(messages + summary(8, 2, 3, 0, 7, input.size()))) << read("err");
}

TEST_F(ReplayTool, StopsAtTheFirstBadLineWhenStrict) {
    const std::string good = std::string(kGoodLine) + "\n";
    write("a", good + "{\n" + good);
    write("b", good);
    EXPECT_EQ(sh("$TOOL run --strict --threads 4 a b --rejects rejects >out"), 1);
    EXPECT_EQ(readOwn("out"), kGoodOutput);
    EXPECT_EQ(read("rejects"), "{\n");
    EXPECT_TRUE(read("err").find(summary(2, 1, 2, 0, 1, good.size() + 2)) != std::string::npos) << read("err");
}

TEST_F(ReplayTool, SaysWhyARunIsImpossible) {
    const std::pair<const char*, const char*> cases[] = {
        {"$TOOL", "A subcommand is required\n"},
        {"$TOOL run --stric", "The following argument was not expected: --stric; did you mean \"--strict\"?\n"},
        {"$TOOL run in none", "cannot open none: No such file or directory\n"},
        {"$TOOL run in . -o old", "cannot read .: Is a directory\n"},
        {"$TOOL run <&-", "cannot read <stdin>: Bad file descriptor\n"},
        {"$TOOL run in -o ./in", "cannot write ./in: it is an input\n"},
        {"$TOOL run in >> in", "cannot write <stdout>: it is an input\n"},
        {"$TOOL run in -o old --rejects ./old", "cannot write ./old: it is the same place as old\n"},
        {"$TOOL run in --rejects - >both", "cannot write <stdout>: it is the same place as <stdout>\n"},
        {"$TOOL run in >&-", "cannot write <stdout>: Bad file descriptor\n"},
        {"$TOOL run in -o new --store ./new", "cannot write new: it is part of the store\n"},
        {"$TOOL run in -o old --rejects s-journal --store link", "cannot read in: it is part of the store\n"},
        {": >s; ln -s s l; $TOOL run in -o old --rejects s-journal --store l",
         "cannot write s-journal: it is part of the store\n"},
        {"cp in text; $TOOL run in -o old --store text", "cannot use text: file is not a database\n"},
        {"$TOOL run in -o old --store bad", "cannot use bad: the sequence \"global\" holds no number to go on from\n"},
        {"echo [] >j; $TOOL run in -o old --schema j", "j: expected an object\n"},
        {"echo '{' >j; $TOOL run in -o old --schema j", "j:2: not JSON: column 1: Missing '}' or object member name\n"},
        {"$TOOL run in -o old --schema link", "cannot read events from in: it is the event schema\n"},
        {"$TOOL run -o old --schema s --store s", "cannot read s: it is part of the store\n"},
        {"$TOOL run in -o old --store odd", "cannot use odd: it is no store but the database of something else\n"},
        {"$TOOL run in -o old --store endless", "endless: it is no store but the database of something else\n"},
        {"$TOOL run in -o old --store other", "cannot use other: it is no store but the database of something else\n"},
        {"$TOOL schema lookup none a", "cannot open none: No such file or directory\n"},
        {"$TOOL run in -o old --device old", "cannot write old: it is an input\n"},
        {"$TOOL run in -o old --expect link", "cannot read events from in: it holds the expectations\n"},
        {"printf '{\"events\":{\"%01025d\":{}}}' 0 >e; $TOOL run in -o old --expect e",
         "...: expected a name of at most 1024 bytes\n"},
        {"$TOOL run in -o old --device link", "cannot read events from in: it describes the device\n"},
        {"cp in d; $TOOL run in -o old --device d",
         "d:2: not JSON: column 1: Extra non-whitespace after JSON value.\n"},
    };
    const std::string content = std::string(kGoodLine) + "\n{\n";
    StoreFile bad(folder_ / "bad");
    StoreFile(folder_ / "odd").run("CREATE TABLE key_values(kind, store, key CHECK(key LIKE key))");
    StoreFile endless(folder_ / "endless");
    endless.createTable(StoreFile::kSequenceNumbers);
    endless.run(
        "CREATE TRIGGER t AFTER INSERT ON sequence_numbers BEGIN SELECT count(*) FROM"
        " (WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x FROM c) SELECT x FROM c); END");
    StoreFile(folder_ / "other").run("CREATE TABLE bookmarks(url)");
    bad.createTable(StoreFile::kSequenceNumbers);
    bad.run("INSERT INTO sequence_numbers VALUES('global', -7)");
    for (const auto& [command, message] : cases) {
        write("in", content);
        write("old", "kept");
        if (!fs::exists(folder_ / "link")) fs::create_symlink("in", folder_ / "link");
        EXPECT_EQ(sh(command), 2) << command;
        EXPECT_NE(read("err").find(message), std::string::npos) << command << "\n" << read("err");
        EXPECT_EQ(read("in"), content) << command;
        EXPECT_EQ(read("old"), "kept") << command;
    }
}

TEST_F(ReplayTool, FollowsALiveStream) {
    const std::string unchecked = "expectations not checked: the run has not come to its end\n";
    const std::string start =
        "rm -f p out; mkfifo p; env --default-signal=INT timeout --foreground -s KILL 20 $TOOL run - --threads 2 "
        "--expect e -o out "
        "<p & exec 3>p; { cat in; printf '\\n{\"half'; } >&3; until [ -s out ]; do sleep .01; done; ";
    write("in", std::string(kGoodLine) + "\n");
    write("e", R"({"events":{"launch":{"kept":1}}})");
    EXPECT_EQ(sh(start + "kill -INT $!; wait $!"), 130);
    EXPECT_EQ(readOwn("out"), kGoodOutput);
    EXPECT_TRUE(read("err").starts_with("<stdin>:1: interrupted after this line\n" +
                                        summary(1, 1, 2, 0, 0, read("in").size() + 1)))
        << read("err");
    EXPECT_TRUE(read("err").ends_with(unchecked)) << read("err");
    EXPECT_EQ(sh(start + "kill $!; wait $!"), 143);

    const std::string head = "$TOOL run $o; echo $? >status; } | head -n 1 >out; exit $(cat status)";
    EXPECT_EQ(sh("{ yes \"$(cat in)\" | " + head), 0);
    EXPECT_EQ(readOwn("out"), kGoodOutput);
    EXPECT_TRUE(read("err").starts_with("read ")) << read("err");
    EXPECT_EQ(sh("o='--expect e --threads 3'; { yes \"$(cat in)\" | " + head), 2);
    EXPECT_TRUE(read("err").ends_with(unchecked)) << read("err");
}

TEST_F(ReplayTool, WritesTheSameWithAnyNumberOfThreads) {
    const std::string day = TELEMETRY_SAMPLES "/day.jsonl";
    const std::string longLine = "{ head -c 1100000 /dev/zero | tr '\\0' x; echo; }";
    const std::string start = "{ sed '5~7s/}$/,\"x\":1}/; 9~99s/$/ /' " + day + "; " + longLine + "; " + longLine +
                              "; head -n 70 " + day + "; " + longLine + "; } >in; $TOOL run in " + day +
                              " --device " TELEMETRY_SAMPLES "/device.json --schema " TELEMETRY_SAMPLES
                              "/schema.json --rejects bad --drops drops --monitor-events reports ";
    std::string all[2];
    for (const bool several : {false, true}) {
        EXPECT_EQ(sh(start + (several ? "--threads 5 " : "") + ">out"), 1);
        std::string messages = read("err");
        messages.erase(messages.find("events per second"), 60);
        all[several] = read("out") + read("bad") + read("drops") + read("reports") + messages;
    }
    EXPECT_GT(all[0].size(), 5'000'000U);
    EXPECT_TRUE(all[0] == all[1]);
}

TEST_F(ReplayTool, NamesWhatIsWrongWithADevice) {
    const std::pair<std::string, std::string> cases[] = {
        {"[]", "1: expected an object"},
        {"{\r\n \"users\": 1 1}", "2: not JSON: column 13: Missing ',' or '}' in object declaration"},
        {"{\n\n\xFF", "3: not UTF-8: column 1"},
        {std::string(2 << 20, ' '), " longer than 1048576 bytes"},
        {R"({"user":{}})", "1: user: unknown member; did you mean \"users\"?"},
        {R"({"//":"a comment","clock":{"//":1}})", "1: clock.//: expected a string"},
        {R"({"identities":{"10123":5}})", "1: identities.10123: expected a string"},
        {"\xEF\xBB\xBF"
         R"({"identities":{"1\u0000":""}})",
         "1: identities.1\\u0000: expected the name to be an unsigned 32-bit integer"},
        {R"({"packages":{")" + std::string(127, 'n') + "\u00e9\":{\"x\":1}}}",
         "1: packages." + std::string(127, 'n') + "....x: expected the name to be an unsigned 32-bit integer"},
        {R"({"packages":{")" + std::string(1025, 'n') + R"(":{}}})",
         "1: packages." + std::string(128, 'n') + "...: expected a name of at most 1024 bytes"},
        {R"({"users":{"00":{}}})", "1: users.00: expected the name to be a signed 32-bit integer"},
        {R"({"users":{"0":{"managed_mode":2147483648}}})", "1: users.0.managed_mode: expected a signed 32-bit integer"},
        {R"({"users":{"0":{"account_mode":1}}})", "1: users.0.account_mode: expected true or false"},
        {R"({"packages":{"a.b":{"1":{"version_code":1.0}}}})",
         "1: packages.a.b.1.version_code: expected a signed 64-bit integer"},
        {R"({"sessions":{"v2":{}}})", "1: sessions.v2: expected an array"},
        {R"({"sessions":{"v2":[{},{"since_ms":0}]}})", "1: sessions.v2[1]: another one has the same since_ms"},
        {R"({"app_overrides":{"1":{"0":{}}}})",
         "1: app_overrides.1.0: 0 stands for no application, which has no overrides"},
        {R"({"events_in_verification":["a",1]})", "1: events_in_verification[1]: expected a string"},
        {R"({"feature_gates":{"arvo_mobile_telemetry_intake":true}})",
         "1: feature_gates.arvo_mobile_telemetry_intake: unknown member; did you mean "
         "\"arvo_mobile_telemetry_intake_monitor\"?"},
        {R"({"dynamic_telemetry":{"records":[{"fetch":{"outcome":"NoChange"}}]}})",
         "1: dynamic_telemetry.records[0].fetch.outcome: expected noChange, persistSuccess, persistError, parseError, "
         "endpointError or userTokenEmpty; did you mean \"noChange\"?"},
        {R"({"dynamic_telemetry":{"events":{"a":{"sample_rate":"1"}}}})",
         "1: dynamic_telemetry.events.a.sample_rate: expected a number"},
        {R"({"dynamic_telemetry":{"events":{"a":{"sample_rate":1.5}}}})",
         "1: dynamic_telemetry.events.a.sample_rate: expected a number from 0 to 1"},
        {R"({"clock":{"time_ms":1}})", "1: clock: time_ms and boot_time_ms go together"},
        {R"({"system_properties":{"a":"\u0000"}})", "1: system_properties.a: a system property cannot hold a NUL"},
    };
    for (const auto& [device, message] : cases) {
        write("device", device);
        EXPECT_EQ(sh("$TOOL run --device device </dev/null"), 2);
        EXPECT_EQ(read("err"), "device:" + message + "\n");
    }
}

TEST_F(ReplayTool, EnrichesEventsAsTheDeviceDoes) {
    write("device", R"({
        "device_ids": {"telemetry": "t", "morlek": "m"},
        "system_properties": {"ro.serialno": "1WM"},
        "users": {"10": {"managed_mode": -2, "account_mode": true}},
        "identities": {"10123": "42"},
        "packages": {"com.a": {"10123": {"version_name": "1.2", "version_code": 12}}},
        "foreground": {"package": "com.f", "version_name": "9"},
        "sessions": {"attach_to_all_events": true, "legacy": {"0": [1]},
                     "v2": [{"since_ms": 5000, "context": "c5"}, {"since_ms": 1, "context": "c1"}]},
        "app_overrides": {"1010123": {"7": {"id": "o", "sdk_app_package_version_name": "n",
                                            "sdk_app_package_version_code": 4294967296}}},
        "dynamic_telemetry": {"configs": {"10": "c10"}, "events": {"e": {"sample_rate": 1}}},
        "clock": {"adjusted": true, "time_ms": 1790000000000, "boot_time_ms": 10000}})");
    write("in", R"({"name":"e","uid":10123,"data":{"utl_logging_package":"com.a","utl_realtime_ms":4999}}
{"name":"e","uid":1010123,"data":{"utl_app_id":7,"utl_logging_package":"com.a","utl_realtime_ms":5000}})");
    EXPECT_EQ(sh("$TOOL run in --device device --quiet >out"), 0);
    EXPECT_EQ(
        readUnaudited("out"),
        R"({"name":"e","uid":10123,"identifier":"e","data":{"__sessions":[1],"__sessions_v2":"c1",)"
        R"("account_mode":-1,"adjusted":true,"applied_sample_rate":1,"device_serial":"1WM",)"
        R"("dynamic_telemetry_config_id":"","event_schema_timestamp":0,"fg_app_package_name":"com.f","fg_app_package_version":"9","global_sequence_number":1,"managed_mode":0,"per_type_sequence_number":1,)"
        R"("realtime":false,"sdk_app_package":"com.a","sdk_app_package_version_code":12,)"
        R"("sdk_app_package_version_name":"1.2","timestamp":1789999994999,"utl_logging_package":"com.a",)"
        R"("utl_realtime_ms":4999},"header":{"app_id":736366014426470,"app_version":"1.2","consent_state":"0","id":"42",)"
        R"("morlek_device_id":"m"}})"
        "\n"
        R"({"name":"e","uid":1010123,"identifier":"e","data":{"__sessions_v2":"c5",)"
        R"("account_mode":1,"adjusted":true,"applied_sample_rate":1,"device_serial":"1WM",)"
        R"("dynamic_telemetry_config_id":"c10","event_schema_timestamp":0,"fg_app_package_name":"com.f","fg_app_package_version":"9","global_sequence_number":3,"managed_mode":-2,"per_type_sequence_number":2,)"
        R"("realtime":false,"sdk_app_package":"com.a","sdk_app_package_version_code":4294967296,)"
        R"("sdk_app_package_version_name":"n","timestamp":1789999995000,"utl_app_id":7,)"
        R"("utl_logging_package":"com.a","utl_realtime_ms":5000},"header":{"app_id":7,"app_version":"n","consent_state":"0","id":"o",)"
        R"("morlek_device_id":"m"}})"
        "\n");
}

TEST_F(ReplayTool, SequenceNumbersGoOnFromRunToRun) {
    const auto global = [&] { return fakes::parsed(read("out"))["data"]["global_sequence_number"].asUInt(); };
    const auto perType = [&] { return fakes::parsed(read("out"))["data"]["per_type_sequence_number"].asUInt(); };
    write("a", kGoodLine);
    write("b", R"({"name":"global","data":{}})");
    EXPECT_EQ(sh("$TOOL run a b b --store s >out && $TOOL run a --store s >out"), 0);
    EXPECT_EQ(global(), 6U);
    EXPECT_EQ(perType(), 2U);

    {
        // Three processes at once. Only the last batch that was reserved can be handed back.
        StoreFile files[] = {StoreFile(folder_ / "s"), StoreFile(folder_ / "s"), StoreFile(folder_ / "s")};
        StoredSequenceNumbers first(files[0]), second(files[1]);
        EXPECT_EQ(first.getNextGlobalSequenceNumber(true), 8U);
        EXPECT_EQ(second.getNextGlobalSequenceNumber(false), 1008U);
        for (unsigned i = 9; i < 1008; ++i) EXPECT_EQ(first.getNextGlobalSequenceNumber(false), i);
        EXPECT_EQ(first.getNextGlobalSequenceNumber(false), 2008U);
        EXPECT_EQ(first.getNextPerTypeSequenceNumber("launch"), 3U);
        second.handBack();
        StoredSequenceNumbers third(files[2]);
        EXPECT_EQ(third.getNextGlobalSequenceNumber(false), 3008U);
        first.handBack();
        third.handBack();
    }
    EXPECT_EQ(sh("$TOOL run a --store s >out; $TOOL run b >out2"), 0);
    EXPECT_EQ(global(), 3009U);
    EXPECT_EQ(perType(), 4U);
    // A store of its own, and a device of which nothing is known.
    EXPECT_NE(read("out2").find(R"("data":{"__sessions_v2":"","account_mode":-1,"adjusted":false,)"
                                R"("applied_sample_rate":1,"device_serial":"Unknown","dynamic_telemetry_config_id":"",)"
                                R"("event_schema_timestamp":0,"fg_app_package_name":"","fg_app_package_version":"",)"
                                R"("global_sequence_number":1,"managed_mode":0,"per_type_sequence_number":1,)"),
              std::string::npos);

    // The file may grow no more.
    EXPECT_EQ(sh("for i in $(seq 999); do echo '{\"name\":\"event'$i'\",\"data\":{}}'; done >many; ulimit -f 400; "
                 "$TOOL run many -o /dev/null --store s"),
              2);
    EXPECT_TRUE(read("err").starts_with("cannot use s: ")) << read("err");
    EXPECT_EQ(read("err").find("cannot process"), std::string::npos) << "it is no fault of the event's";
}

TEST_F(ReplayTool, StopsEarlyWhenAFileIsFullYetFinishesTheOthers) {
    std::string input = "{\n";
    for (int i = 0; i < 5000; ++i) (input += kGoodLine) += '\n';
    write("in", input);
    for (const std::string threads : {"1", "4"}) {
        EXPECT_EQ(sh("$TOOL run in -o /dev/full --rejects rejects --threads " + threads), 2);
        EXPECT_EQ(read("rejects"), "{\n");
        const std::string err = read("err");
        EXPECT_TRUE(
            err.starts_with("in:1: not JSON: column 2: Missing '}' or object member name\n"
                            "cannot write /dev/full: No space left on device\nread "))
            << err;
        EXPECT_EQ(err.find("5000"), std::string::npos) << err;
    }

    // One write, of which the first part still fits.
    EXPECT_EQ(sh("head -n 100 in >some; ulimit -f 8; $TOOL run some -o out"), 2);
    EXPECT_NE(read("err").find("cannot write out: File too large\n"), std::string::npos) << read("err");
}

TEST_F(ReplayTool, TracesAndTellsItsVersion) {
    write("in", kGoodLine);
    EXPECT_EQ(sh("$TOOL run in --trace trace >out && $TOOL --version >text"), 0);
    EXPECT_NE(read("trace").find("Processing: launch"), std::string::npos);
    EXPECT_TRUE(read("text").starts_with("telemetry-replay ")) << read("text");
}

TEST_F(ReplayTool, TerminalsGetABarAndColours) {
    if (sh("script -qec true /dev/null </dev/null") != 0) GTEST_SKIP() << "no pseudo-terminal to be had";
    write("in", kGoodLine);
    EXPECT_EQ(sh("script -qec \"$TOOL run in -o out\" /dev/null </dev/null >screen"), 0);
    EXPECT_TRUE(read("screen").starts_with("\r[##############################] 100% of 0.0 MiB\r  ")) << read("screen");
    const std::string afterInput = "{ until [ -e there ]; do sleep .01; done; $TOOL run -o out; }";
    EXPECT_EQ(sh("script -qec \"{ cat in; >there; } | " + afterInput + "\" /dev/null </dev/null >screen"), 0);
    EXPECT_TRUE(read("screen").starts_with("\rread 1, reported 1, kept 2, dropped 0, bad 0\r  ")) << read("screen");
    EXPECT_EQ(sh("script -qec \"$TOOL run in\" /dev/null </dev/null >screen"), 0);
    EXPECT_EQ(read("screen").find("[#"), std::string::npos) << "the output is on the terminal too";
    EXPECT_EQ(sh("script -qec \"$TOOL run in --quiet -o out; cat in | $TOOL run -q -o out\" /dev/null >screen"), 0);
    EXPECT_EQ(read("screen"), "");
    EXPECT_EQ(sh("script -qec \"$TOOL explain in; NO_COLOR=1 $TOOL explain in\" /dev/null </dev/null >screen"), 0);
    const std::string screen = read("screen");
    EXPECT_NE(screen.find("\x1B[1mlaunch\x1B[0m  in:1"), std::string::npos) << screen;
    EXPECT_NE(screen.find("\nlaunch  in:1"), std::string::npos) << screen;
    EXPECT_EQ(screen.rfind("\x1B[1m"), screen.find("\x1B[1m"));
}

TEST_F(ReplayTool, SaysWhyAnEventIsDropped) {
    write("device", R"({
        "users": {"0": {"data_use_consent": true}, "10": {"consent": true, "parvi_account": true}},
        "filter": {"enabled": true, "discretionary_packages": [""]},
        "telemetry_enabled": [{"since_ms": 100, "enabled": false}, {"since_ms": 200, "enabled": true},
                              {"since_ms": 201, "enabled": false}],
        "events_in_verification": ["verified"],
        "rate_limits": {"default": {"max_events": 5}, "identifiers": {
            "rare": {"refill_count": 1, "max_events": 1, "window_seconds": 3600}, "odt_4": {"max_events": 0},
            "telemetry_event_filtering_audit": {}}},
        "checkpointed_uids": [1010187],
        "dynamic_telemetry": {"seed": 7, "events": {"no": {"keep": false}, "some": {"sample_rate": 0.125}}, "records": [
            {"at_ms": 201, "guard": {}},
            {"at_ms": 200, "fetch": {"finished_us": 1999, "outcome": "userTokenEmpty", "fetched_config_id": "f",
                                     "active_config_id": "a"}},
            {"at_ms": 200, "monitor": {"config_id": "c", "processed_event_name": "p", "logging_duration_ms": 3}},
            {"at_ms": 199, "guard": {"config_id": "c", "logging_duration_ms": 2, "metrics": {"m": 5}}}]}})");
    const std::string breach =
        R"({"bundle":{"caller":false,"event":"rare","rate":2.0,)"
        R"("utl_realtime_ms":0,"utl_uptime_ms":0},"name":"telemetry_service_event_rate_limit_breach","reported_at":"in:2","uid":1000})";
    const auto status = [](const char* state, const std::string& times, int line, int uid) {
        return std::string(R"({"bundle":{"is_checkpointed":)") + state + times +
               R"(},"name":"arvo_telemetry_checkpoint_status_monitor","reported_at":"in:)" + std::to_string(line) +
               R"(","uid":)" + std::to_string(uid) + "}\n";
    };
    const auto fingerprints = [](const std::string& pathway, int line) {
        return R"({"bundle":{"event_identifier":"verified_0","event_name":"verified","fields_number":0,)"
               R"("hash_value":797982799,"hash_value_without_timestamp":797982799,"original_utl_realtime_ms":0,)"
               R"("pathway":")" +
               pathway + R"(","utl_realtime_ms":0,"utl_uptime_ms":0},)" +
               R"("name":"arvo_mobile_telemetry_statsd_verification_monitor","reported_at":"in:)" +
               std::to_string(line) + R"(","uid":1000})" + "\n";
    };
    const auto record = [](const std::string& members, const std::string& name) {
        return R"({"bundle":{)" + members + R"(,"utl_realtime_ms":200,"utl_uptime_ms":200},)" +
               R"("name":"telemetry_service_dynamic_telemetry_)" + name + R"(","reported_at":"in:11","uid":1000})" +
               "\n";
    };
    // The end of a line that is an event, and of the same line among the drops; none if it is kept.
    const std::pair<std::string, const char*> lines[] = {
        {R"({"name":"rare","data":{})", nullptr},
        {R"({ "name":"rare", "data":{"t":"\u0041"}, "dropped" : {"a":1})",
         R"("count":2,"counter":"guard_rate_limit_dropped","guard":"rate_limiter_guard","limit":1,"place":"in:2",)"
         R"("reason":"rate_limit.exceeded","window_ms":3600000)"},
        {R"({"dropped":[1,2],"name":"generic","data":{},"format":"atom","atom_id":111222)",
         R"("counter":"guard_pathway_dropped","format":"Generic Atom","guard":"pathway_guard","place":"in:3",)"
         R"("reason":"pathway.generic_atom")"},
        {R"({"name":"verified","data":{},"format":"atom","atom_id":115000)",
         R"("counter":"guard_pathway_dropped","format":"HAL Atom","guard":"pathway_guard","place":"in:4",)"
         R"("reason":"pathway.in_verification")"},
        {R"({"name":"verified","data":{})", nullptr},
        {R"({"name":"held","uid":1010187,"data":{"utl_realtime_ms":99,"utl_uptime_ms":9})",
         R"("counter":"guard_account_checkpointed_dropped","guard":"account_checkpoint_guard","place":"in:6",)"
         R"("reason":"checkpoint.account","uid":1010187,"user":10)"},
        {R"({"name":"no","data":{})",
         R"("counter":"guard_dynamic_telemetry_dropped","guard":"dynamic_telemetry_guard","place":"in:7",)"
         R"("reason":"dynamic.rule","rule":{"keep":false,"sample_rate":1.0})"},
        {R"({"name":"some","data":{})",
         R"("counter":"guard_dynamic_telemetry_dropped","draw":0.1722808786178821,"guard":"dynamic_telemetry_guard",)"
         R"("place":"in:8","reason":"dynamic.sampling","rule":{"keep":true,"sample_rate":0.125})"},
        {R"({"name":"ondemand_statsd_utl","data":{"campaign_id":4})",
         R"("count":1,"counter":"guard_rate_limit_dropped","guard":"rate_limiter_guard","identifier":"odt_4","limit":0,)"
         R"("place":"in:9","reason":"rate_limit.exceeded","window_ms":null)"},
        {R"({"name":"off","data":{"utl_realtime_ms":199})",
         R"("counter":null,"guard":"telemetry_state_guard","place":"in:10","realtime_ms":199,"reason":"state.disabled")"},
        {R"({"name":"on","data":{"utl_realtime_ms":200})", nullptr},
        {R"({"name":"essential","data":{"utl_logging_package":"p"})", nullptr},
        {R"({"name":"extra","data":{"utl_logging_package":"p"})",
         R"("category":"NON_ESSENTIAL","consent":false,"counter":"guard_filter_dropped","data_use_consent":true,)"
         R"("guard":"event_filter_guard","place":"in:13","reason":"filter.no_consent","uid":1000,"user":0)"},
        {R"({"name":"extra","uid":1000123,"data":{"utl_logging_package":"p"})", nullptr},
        {R"({"name":"other","data":{"utl_logging_package":"p"})", nullptr},
        {R"({"name":"other","uid":1000123,"data":{"utl_logging_package":"p"})",
         R"("category":"NON_ESSENTIAL_WITH_OTHER_CONSENT","consent":true,"counter":"guard_filter_dropped",)"
         R"("data_use_consent":false,"guard":"event_filter_guard","place":"in:16",)"
         R"("reason":"filter.no_data_use_consent","uid":1000123,"user":10)"},
    };
    std::string in, drops;
    for (const auto& [line, dropped] : lines) {
        in += line + "}\n";
        std::string event = line;
        for (const std::string earlier : {R"(, "dropped" : {"a":1})", R"("dropped":[1,2],)"}) {
            const size_t at = event.find(earlier);
            if (at != std::string::npos) event.erase(at, earlier.size());
        }
        if (dropped) drops += event + ",\"dropped\":{" + dropped + "}}\n";
    }
    const std::pair<const char*, const char*> never[] = {{"filter.needs_review", "NEEDS_REVIEW"},
                                                         {"filter.uncategorized", "UNCATEGORIZED"},
                                                         {"filter.invalid", "INVALID"}};
    for (int i = 0; i < 3; ++i) {
        const std::string event = R"({"name":"ondemand_statsd_utl","uid":1000123,"data":{"campaign_id":)" +
                                  std::to_string(i) + R"(,"utl_logging_package":"p"})";
        in += event + "}\n";
        drops += event + R"(,"dropped":{"category":")" + never[i].second +
                 R"(","consent":true,"counter":"guard_filter_dropped","data_use_consent":false,)"
                 R"("guard":"event_filter_guard","identifier":"odt_)" +
                 std::to_string(i) + R"(","place":"in:)" + std::to_string(17 + i) + R"(","reason":")" + never[i].first +
                 R"(","uid":1000123,"user":10}})"
                 "\n";
    }
    write("schema", schemaOf({{"essential", 1}, {"extra", 2}, {"other", 3}, {"odt_0", 4}, {"odt_2", 9}}));
    write("in", in);
    const std::string run = "$TOOL run --device device --store store --drops drops --monitor-events reports -o ";
    EXPECT_EQ(sh(run + "out in --schema schema"), 0);
    EXPECT_EQ(readUnaudited("drops"), drops);
    EXPECT_EQ(readUnaudited("reports"),
              breach + "\n" + fingerprints("HAL Atom", 4) + fingerprints("JSON Bundle", 5) +
                  status("true", R"(,"utl_realtime_ms":99,"utl_uptime_ms":9)", 6, 1010187) +
                  status("false", R"(,"utl_realtime_ms":0,"utl_uptime_ms":0)", 7, 1000) +
                  R"({"bundle":{"caller":false,"event":"ondemand_statsd_utl","event_identifier":"odt_4",)"
                  R"("rate":1.0,"utl_realtime_ms":0,"utl_uptime_ms":0},)"
                  R"("name":"telemetry_service_event_rate_limit_breach","reported_at":"in:9",)"
                  R"("uid":1000})"
                  "\n" +
                  record(R"("dynamic_telemetry_config_id":"c","logging_duration_ms":2,"m":5)", "guard_performance") +
                  record(R"("dynamic_telemetry_config_id":"c","logging_duration_ms":3,"processed_event_name":"p")",
                         "monitor") +
                  record(R"("active_dynamic_telemetry_config_id":"a","fetch_finished_ms":1,"fetch_outcome":)"
                         R"("userTokenEmpty","fetched_dynamic_telemetry_config_id":"f")",
                         "config_performance"));
    EXPECT_TRUE(
        read("err").starts_with("schema:1: warning: allowed_events[4].categories[0]: neither ESSENTIAL nor "
                                "NON_ESSENTIAL, which makes the entry "
                                "INVALID; `telemetry-replay schema check` finds 1 problem\n" +
                                summary(19, 30, 35, 14, 0, in.size())))
        << read("err");
    EXPECT_NE(
        read("reports").find(
            R"("consent_state":32,"data_use_consent":false,"event_category":"NON_ESSENTIAL_WITH_OTHER_CONSENT",)"
            R"("event_schema_timestamp":5,"filter_event_name":"other","is_ads_personalization_purpose_only":false,)"
            R"("is_allowed":false,"is_allowed_if_filter_enabled":false,"is_bypassed_for_discretionary_app":false,)"
            R"("is_developer":false,"is_filter_enabled":true,"is_parvi_account":true,)"
            R"("is_personalization_purpose_only":false,"user_consent":true,)"),
        std::string::npos);

    EXPECT_NE(read("err").find("dropped by\n  telemetry_state_guard                           1\n"
                               "  pathway_guard                                   2\n"
                               "  account_checkpoint_guard                        2\n"
                               "  event_filter_guard                              5\n"
                               "  rate_limiter_guard                              2\n"
                               "  dynamic_telemetry_guard                         2\n"
                               "counters\n  guard_account_checkpointed_dropped              2\n"),
              std::string::npos);
    EXPECT_NE(readOwn("out").find(R"("data":{"caller":false,"event":"rare","rate":2.0,"realtime":false,"utl)"),
              std::string::npos)
        << "reports are events too";

    // Fed back in, they are dropped for the same reasons.
    const std::string normalize = "sed -Ei '/filtering_audit/d; s/in:[0-9]+/in/' ";
    EXPECT_EQ(sh("$TOOL run --device device /dev/null"), 0);
    EXPECT_TRUE(read("err").starts_with("warning: no event schema: all events are UNCATEGORIZED\n"));
    EXPECT_EQ(sh("sed 1d drops >in; " + normalize + "in; " + run + "out in && " + normalize + "drops && cmp in drops"),
              0);
}

/// Its own process, which dies in place of the write whose turn has come.
class FatalKeyValues : public StoredKeyValues {
public:
    FatalKeyValues(StoreFile& file, int writes) : StoredKeyValues(file), writes_(writes) {}
    bool setValue(Store store, const std::string& name, const std::string& key, const std::string& value) override {
        if (writes_-- == 0) ::raise(SIGKILL);
        return StoredKeyValues::setValue(store, name, key, value);
    }

private:
    int writes_;
};

TEST_F(ReplayTool, AKilledProcessLeavesAWholeSchema) {
    const auto persist = [&](const std::string& schema, int writes) {
        StoreFile file(folder_ / "s");
        EventSchemaHandler handler(std::make_shared<FatalKeyValues>(file, writes));
        persistSchema(schema, "schema", handler, file);
    };
    // The categories of three events, "p" where one serves to personalize.
    const auto contents = [&] {
        StoreFile file(folder_ / "s");
        EventSchemaHandler handler(std::make_shared<StoredKeyValues>(file));
        std::string text = StoreFile::Statement(file, "PRAGMA journal_mode").texts().at(0);
        for (const char* name : {"a", "b", "c"}) {
            text += " " + std::to_string(static_cast<int>(handler.getEventCategory(name)));
            if (handler.isPersonalizationPurposeOnly(name)) text += "p";
        }
        return text;
    };
    persist(schemaOf({{"a", 1}, {"b", 2}}), -1);
    ASSERT_EQ(contents(), "wal 0 1p 3");
    int writes = 0;
    for (int status = 1; status != 0; ++writes) {
        const pid_t child = ::fork();
        if (child == 0) {
            persist(schemaOf({{"a", 4}, {"b", 3}, {"c", 2}}), writes);
            ::_exit(0);
        }
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(contents(), status == 0 ? "wal 2 5p 1p" : "wal 0 1p 3") << writes << " writes";
    }
    EXPECT_EQ(writes, 7) << "two keys, three entries and a purpose, and then nothing to die of";
}

TEST_F(ReplayTool, SaysWhatDevicesMakeOfASchema) {
    const std::string a = R"({"identifier":")" + std::string(64, 'a') + '"', settings = "settings_to_categories.";
    const std::string array = "expected an array; taken as empty", hash = "expected 64 lower-case hexadecimal digits";
    const std::string integer = "expected a signed 32-bit integer; ", other = "unknown member; ignored";
    const std::string timestamp = "timestamp: expected an unsigned 64-bit integer; reads back as 0";
    const std::string unknown = "neither ESSENTIAL nor NON_ESSENTIAL, which makes the entry INVALID";
    using Lines = std::vector<std::pair<std::string, std::vector<std::string>>>;  // and what is said of each
    const Lines schemas[] = {
        {{R"({"timestamp": "1741759200000", "salt": 5, "settings_to_categories": {)",
          {timestamp, "salt: expected a text that is not empty"}},
         {R"("ESSENTIAL": [1, "2"], "NON_ESSENTIAL": 3,)",
          {settings + "ESSENTIAL[1]: " + integer + "no code", settings + "NON_ESSENTIAL: " + array}},
         {R"("NEEDS_REVIEW": [4, 5], "NON_ESSENTIAL_WITH_OTHER_CONSENT": [7.5],)",
          {settings + "NEEDS_REVIEW: expected exactly one signed 32-bit integer; taken as empty",
           settings + "NON_ESSENTIAL_WITH_OTHER_CONSENT: expected exactly one signed 32-bit integer; taken as 7"}},
         {R"("INVALID": [6]}, "allowed_evnts": [], "allowed_events": [)",
          {"allowed_evnts: " + other + "; did you mean \"allowed_events\"?", settings + "INVALID: " + other}},
         {a + R"(, "categories": [1]},)", {}},
         {a + R"(, "categories": [true, 8, 1, 7], "extra_data_categories": []},)",
          {"allowed_events[1].identifier: the same as allowed_events[0].identifier",
           "allowed_events[1].categories[0]: " + integer + "taken as 1", "allowed_events[1].categories[1]: " + unknown,
           "allowed_events[1].categories[3]: " + unknown,
           "allowed_events[1].extra_data_categories: expected an object; taken as missing"}},
         {R"({"identifier": "salt", "category": {}, "extra_data_categories": {"granular": {}, "g\u0000": 1}},)",
          {"allowed_events[2].category: " + other + "; did you mean \"categories\"?",
           "allowed_events[2].identifier: " + hash, "allowed_events[2].categories: missing",
           "allowed_events[2].extra_data_categories.g\\u0000: " + other,
           "allowed_events[2].extra_data_categories.granular: " + array}},
         {R"({"identifier": {}}, [], {"categories": {}}, {"identifier": 5, "categories": [1, "1"]}],)",
          {"allowed_events[3].identifier: expected a text; the entry is passed over",
           "allowed_events[4]: expected an object", "allowed_events[5].identifier: missing",
           "allowed_events[6].identifier: " + hash, "allowed_events[6].categories[1]: " + integer + "no code"}},
         {R"("allowed_campaigns": {}})", {"allowed_campaigns: " + array}}},
        {{R"({"timestamp": 1.0, "salt": "", "settings_to_categories": {"NEEDS_REVIEW": [1],)",
          {timestamp, "salt: expected a text that is not empty", "allowed_events: missing"}},
         {R"("NON_ESSENTIAL_WITH_OTHER_CONSENT": [1], "ESSENTIAL": [], "NON_ESSENTIAL": [2]}, "allowed_campaigns": [)",
          {settings + "NON_ESSENTIAL_WITH_OTHER_CONSENT: the code for review, which comes first"}},
         {R"({"identifier": ")" + std::string(64, 'A') + R"(", "categories": [1, 2],)",
          {"allowed_campaigns[0].identifier: " + hash,
           "allowed_campaigns[0].categories: a review code among others makes the entry INVALID"}},
         {R"("extra_data_categories": {"granular": ["p"]}},)",
          {"allowed_campaigns[0].extra_data_categories.granular[0]: " + hash}},
         {R"({"identifier": ")" + std::string(63, 'a') + R"(", "categories": [3, 2]}]})",
          {"allowed_campaigns[1].identifier: " + hash, "allowed_campaigns[1].categories[0]: " + unknown}}},
        {{"{", {"timestamp: missing", "salt: missing", "allowed_events: missing", "allowed_campaigns: missing"}},
         {R"("settings_to_categories": 1})", {"settings_to_categories: expected an object; taken as missing"}}},
        {{"", {}}, {"5", {"expected an object"}}},
        {{"[1", {}}, {"", {"not JSON: column 1: Missing ',' or ']' in array declaration"}}},
    };
    for (const Lines& lines : schemas) {
        std::string schema, expected;
        for (size_t i = 0; i < lines.size(); ++i) {
            schema += (i > 0 ? "\n" : "") + lines[i].first;
            for (const std::string& said : lines[i].second) {
                expected += "schema:" + std::to_string(i + 1) + ": " + said + "\n";
            }
        }
        write("schema", schema);
        EXPECT_EQ(sh("$TOOL schema check schema >>out"), 1);
        EXPECT_EQ(read("err"), expected);
    }
    EXPECT_NE(read("out").find("UNCATEGORIZED                                     1\n"
                               "INVALID                                           2\n"
                               "problems                                         24\nESSENTIAL "),
              std::string::npos);

    EXPECT_EQ(sh("{ echo '{\"allowed_events\":['; yes 0, | head -2998; echo '0]}'; } | $TOOL schema check - >out"), 1);
    EXPECT_TRUE(read("err").ends_with("<stdin>:997: allowed_events[995]: expected an object\nand 2003 more\n"));
    EXPECT_TRUE(read("out").ends_with(" 3003\n")) << read("out");

    write("schema", schemaOf({{"extra", 2}, {"other", 3}}));
    EXPECT_EQ(sh("$TOOL schema check - <schema >out && $TOOL schema lookup schema extra other \"$(printf 'n\\033')\" "
                 ">out && echo {} | $TOOL schema lookup - e >>out"),
              0);
    EXPECT_EQ(read("err"), "error: Invalid salt, don't hash event name.\n");
    const auto kept = [](const char* consented) {
        return std::string("\n  kept with consent       ") + consented + "\n  kept without consent    no\n";
    };
    EXPECT_EQ(
        read("out"),
        "extra\n  hash                    8048b69bd5b33a4e38a834d272665d1c42c1929ee9614b25eb02111175946c2b\n"
        "  category                NON_ESSENTIAL\n  only purpose            Personalization" +
            kept("yes") +
            "other\n  hash                    01db91d06032cc64162c16f8e35725b0e632beebdde8b2c2459979d04fb1e20c\n"
            "  category                NON_ESSENTIAL_WITH_OTHER_CONSENT\n  only purpose            none" +
            kept("yes") +
            "n\\u001b\n  hash                    8859b8645d15eb6bace16fc0fe4827f834487aec5122b2f8af738f7f801d63f1\n"
            "  category                UNCATEGORIZED\n  only purpose            none" +
            kept("no") +
            "e\n  hash                    none, for want of a salt\n"
            "  category                UNCATEGORIZED\n  only purpose            none" +
            kept("no"));
}

TEST_F(ReplayTool, ExplainsWhatEachStageDoes) {
    write("device", R"({"feature_gates": {"arvo_mobile_telemetry_intake_monitor": true},
        "device_ids": {"morlek": "m"}, "clock": {"adjusted": true, "time_ms": 1790000000000, "boot_time_ms": 10000}})");
    const std::string op = R"({"name":"arvo_sensitive_app_ops_monitor","bundle":{"op_caller_android_uid":7,"v":["x"],)"
                           "\"op_caller_package\":\"p\x7F\xC2\x9B\u202e\","
                           R"("sdk_app_package":{"a\u001b":1},"sdk_app_package_version_name":"",)"
                           R"("global_sequence_number":8}})";
    write("in", op + "\n[]\n" + op + R"(
{"name":"generic","data":{},"format":"atom","atom_id":111222}
{"name":"telemetry_event_filtering_performance","data":{}}
{"name":"arvo_sensitive_app_ops_monitor","data":{"op_caller_android_uid":4294967295}})");
    EXPECT_EQ(sh("$TOOL run in --device device >out"), 1);
    EXPECT_EQ(sh("$TOOL explain in --device device --line 1 --line 3 --line 4 >text"), 0);
    const size_t third = read("out").find(R"("global_sequence_number":8,)");
    const size_t start = read("out").rfind('\n', third) + 1;
    const std::string output = read("out").substr(start, read("out").find('\n', third) + 1 - start);
    for (const std::string& part :
         {std::string("    reported telemetry_event_filtering_audit, uid 7\n      build_product"),
          std::string("arvo_sensitive_app_ops_monitor  in:3, uid 1000, JSON Bundle\n"),
          std::string("    ~ event.uid 1000 -> 7\n    + event_schema_timestamp 0\n"),
          std::string("~ sdk_app_package {\"a\\u001b\":1} -> \"\"\n      + sdk_app_package_version_code 0\n"),
          std::string("  seq_num_applier               applied\n    + per_type_sequence_number 2\n"),
          "  kept\n" + output + "\ngeneric  in:4, uid 1000, Generic Atom\n"}) {
        EXPECT_NE(read("text").find(part), std::string::npos) << read("text");
    }
    EXPECT_EQ(read("err"), "");

    const std::string json = "$TOOL explain --json in --device device -o out --name ";
    EXPECT_EQ(sh(json + "arvo_sensitive_app_ops_monitor --name generic --line 3"), 0);
    const std::string line = read("out");
    EXPECT_TRUE(line.ends_with(R"(,"output":)" + output.substr(0, output.size() - 1) + "}\n")) << line;
    for (const char* part :
         {R"({"data":{"global_sequence_number":8,"op_caller_android_uid":7,"op_caller_package":"p\u007f\u009b\u202e",)",
          R"("v":["x"]},"format":"JSON Bundle","identifier":"arvo_sensitive_app_ops_monitor","name":)"
          R"("arvo_sensitive_app_ops_monitor","place":"in:3","stages":[{"fate":"observed","kind":)"
          R"("monitor","name":"intake_monitor"},)",
          R"({"changes":[{"field":"uid","in":"event","new":7,"old":1000},{"field":)"
          R"("event_schema_timestamp","in":"data","new":0},{"field":"consent_state","in":"header",)"
          R"("new":"0"}],"fate":"passed","kind":"guard","name":"event_filter_guard"},)",
          R"("name":"osutils_device_id_applier","within":"device_info_applier"},)"}) {
        EXPECT_NE(line.find(part), std::string::npos) << line;
    }
    EXPECT_EQ(sh(json + "generic --name telemetry_event_filtering_performance --line 4 --line 5"), 0);
    for (const char* part : {R"("reports":[{"bundle":{"event_name":"generic","intake_format":"Generic Atom",)",
                             R"({"fate":"not_reached","kind":"guard","name":"account_checkpoint_guard"},)",
                             R"("dropped":{"counter":"guard_pathway_dropped","format":"Generic Atom",)",
                             R"({"fate":"blocked","kind":"applier","name":"identity_applier"},)"}) {
        EXPECT_NE(read("out").find(part), std::string::npos) << part;
    }

    EXPECT_EQ(sh("$TOOL explain in --line 6 >text"), 1);
    EXPECT_NE(read("text").find("event_filter_guard            failed: LargestInt out of Int range\n  not reached:\n"),
              std::string::npos);
    // Monitor events only by name, and no more than the first; nothing is read any more then.
    EXPECT_EQ(sh(json + "telemetry_event_filtering_audit --first 1 && wc -l <out >lines"), 0);
    EXPECT_NE(read("out").find(R"("reported_at":"in:1")"), std::string::npos);
    EXPECT_EQ(read("lines"), "1\n");
    EXPECT_EQ(sh("yes \"$(head -n 1 in)\" | timeout 20 $TOOL explain --line 2 | grep -c '^[a-z]' >lines"), 0);
    EXPECT_EQ(read("lines"), "1\n");
    // Warnings are about events that are shown, and what is shown is not lost when a file fails.
    EXPECT_EQ(sh("echo '{\"name\":\"perf\",\"data\":{}}' >odd; $TOOL explain odd in --line 3 >text"), 0);
    EXPECT_EQ(read("err"), "");
    EXPECT_EQ(sh("$TOOL explain odd in /proc/self/mem --line 1 | grep -c '^[a-z]' >lines"), 0);
    EXPECT_EQ(read("lines"), "2\n");
    EXPECT_TRUE(read("err").starts_with("odd:1: ")) << read("err");
    EXPECT_EQ(sh("$TOOL explain in --line 2 --line 9"), 1);
    EXPECT_EQ(read("err"), "in:2: expected an object\nnone of the events was chosen\n");
    EXPECT_EQ(sh("sed '2d;6d' in | $TOOL explain odd - --name generic --name perff >text"), 0);
    EXPECT_EQ(read("err"), "warning: no perff; did you mean \"perf\"?\n");
    EXPECT_EQ(sh("$TOOL explain in --name generic --line 1"), 1);
    EXPECT_EQ(read("err"), "none of the events was chosen\n") << "the name comes later";
    EXPECT_EQ(sh("$TOOL explain in --line 0"), 2);
    EXPECT_TRUE(read("err").starts_with("--line: expected an integer from 1 to 18446744073709551615, not \"0\"\n"));
}

TEST_F(ReplayTool, ReportsThatBegetReportsComeToAnEnd) {
    write("device", R"({"rate_limits":{"default":{"refill_count":1,"max_events":4294967296,"window_seconds":0}}})");
    write("in", std::string(kGoodLine) + "\n" + kGoodLine + "\n" + kGoodLine);
    EXPECT_EQ(sh("$TOOL run in --device device -o out --monitor-events reports"), 0);
    const std::string warning = "in:2: warning: reports beget reports; not all are logged\n";
    EXPECT_TRUE(read("err").starts_with(warning + summary(3, 17, 20, 0, 0, read("in").size()))) << read("err");
}

}  // namespace Velo::OS::Telemetry::replay
