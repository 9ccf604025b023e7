#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "replay/Replay.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "tests/fakes/FakeStages.h"

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
    static std::string summary(int read, int kept, int bad, size_t bytes) {
        char text[256];
        std::snprintf(text, sizeof(text),
                      "read               %12d\nkept               %12d\ndropped                       0\n"
                      "bad                %12d\nbytes              %12zu\nevents per second  ",
                      read, kept, bad, bytes);
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
    EXPECT_EQ(read("out"), expected);
    EXPECT_TRUE(read("err").starts_with(summary(3, 3, 0, bytes))) << read("err");

    write("out", "an earlier run's output, longer than this one's" + std::string(2000, '.'));
    EXPECT_EQ(sh("$TOOL run --quiet -o out a ./b"), 0);
    EXPECT_EQ(read("out"), expected);
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
    EXPECT_EQ(read("out"), kGoodOutput);
    EXPECT_TRUE(read("rejects") == rejects);
    const std::string messages =
        "in\\u001b:2: not UTF-8: column 13\n"
        "in\\u001b:3: longer than 1048576 bytes\n"
        "in\\u001b:4: not JSON: column 4: control character in a string\n"
        "in\\u001b:5: n\\u001b: unknown member\n"
        "in\\u001b:6: warning: Event [name: \\u001b[2J] wasn't successfully converted to json.\n"
        "in\\u001b:6: bundle: cannot be converted to JSON\n"
        "in\\u001b:7: expected an object\n";
    EXPECT_TRUE(read("err").starts_with(messages + summary(7, 1, 6, input.size()))) << read("err");
}

TEST_F(ReplayTool, StopsAtTheFirstBadLineWhenStrict) {
    const std::string good = std::string(kGoodLine) + "\n";
    write("a", good + "{\n" + good);
    write("b", good);
    EXPECT_EQ(sh("$TOOL run --strict a b --rejects rejects >out"), 1);
    EXPECT_EQ(read("out"), kGoodOutput);
    EXPECT_EQ(read("rejects"), "{\n");
    EXPECT_TRUE(read("err").find(summary(2, 1, 1, good.size() + 2)) != std::string::npos) << read("err");
}

TEST_F(ReplayTool, SaysWhyARunIsImpossible) {
    const std::pair<const char*, const char*> cases[] = {
        {"$TOOL", "A subcommand is required\n"},
        {"$TOOL run --stric", "The following argument was not expected: --stric\n"},
        {"$TOOL run in none", "cannot open none: No such file or directory\n"},
        {"$TOOL run in . -o old", "cannot read .: Is a directory\n"},
        {"$TOOL run <&-", "cannot read <stdin>: Bad file descriptor\n"},
        {"$TOOL run in -o ./in", "cannot write ./in: it is an input\n"},
        {"$TOOL run in --rejects link", "cannot write link: it is an input\n"},
        {"$TOOL run in >> in", "cannot write <stdout>: it is an input\n"},
        {"$TOOL run in -o old --rejects ./old", "cannot write ./old: it is the same place as old\n"},
        {"$TOOL run in --rejects - | cat >&2; exit 2", "cannot write <stdout>: it is the same place as <stdout>\n"},
        {"$TOOL run in >&-", "cannot write <stdout>: Bad file descriptor\n"},
        {"$TOOL run in -o /dev/full", "cannot write /dev/full: No space left on device\n"},
        {"$TOOL run in -o /dev/null --rejects /dev/full", "cannot write /dev/full: No space left on device\n"},
        {"$TOOL run in -o /dev/null --trace /dev/full", "cannot write /dev/full: No space left on device\n"},
        {"$TOOL --help >/dev/full", "cannot write <stdout>: No space left on device\n"},
        {"{ yes \"$(head -n 1 in)\" | $TOOL run; echo $? >status; } | head -n 1 >first; exit $(cat status)",
         "cannot write <stdout>: Broken pipe\n"},
    };
    const std::string content = std::string(kGoodLine) + "\n{\n";
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

TEST_F(ReplayTool, StopsEarlyWhenAFileIsFullYetFinishesTheOthers) {
    std::string input = "{\n";
    for (int i = 0; i < 5000; ++i) input += std::string(kGoodLine) + "\n";
    write("in", input);
    EXPECT_EQ(sh("$TOOL run in -o /dev/full --rejects rejects"), 2);
    EXPECT_EQ(read("rejects"), "{\n");
    const std::string err = read("err");
    EXPECT_TRUE(
        err.starts_with("in:1: not JSON: column 2: Missing '}' or object member name\n"
                        "cannot write /dev/full: No space left on device\nread "))
        << err;
    EXPECT_EQ(err.find("kept                       5000"), std::string::npos) << err;

    // One write, of which the first part still fits.
    EXPECT_EQ(sh("head -n 100 in >some; ulimit -f 8; $TOOL run some -o out"), 2);
    EXPECT_NE(read("err").find("cannot write out: File too large\n"), std::string::npos) << read("err");
}

TEST_F(ReplayTool, TracesAndExplainsItself) {
    write("in", kGoodLine);
    EXPECT_EQ(sh("$TOOL run in --trace trace >out && $TOOL --version >text && $TOOL run --help >>text"), 0);
    EXPECT_NE(read("trace").find("Processing: launch"), std::string::npos);
    EXPECT_TRUE(read("text").starts_with("telemetry-replay ")) << read("text");
    EXPECT_NE(read("text").find("Exit status:"), std::string::npos) << read("text");
}

TEST_F(ReplayTool, DrawsABarOnATerminalOnly) {
    if (sh("script -qec true /dev/null </dev/null") != 0) GTEST_SKIP() << "no pseudo-terminal to be had";
    write("in", kGoodLine);
    EXPECT_EQ(sh("script -qec \"$TOOL run in -o out\" /dev/null </dev/null >screen"), 0);
    EXPECT_TRUE(read("screen").starts_with("\r[##############################] 100% of 0.0 MiB\r  ")) << read("screen");
    EXPECT_EQ(sh("script -qec \"$TOOL run in\" /dev/null </dev/null >screen"), 0);
    EXPECT_EQ(read("screen").find("[#"), std::string::npos) << "the output is on the terminal too";
    EXPECT_EQ(sh("script -qec \"$TOOL run in --quiet -o out; cat in | $TOOL run -q -o out\" /dev/null >screen"), 0);
    EXPECT_EQ(read("screen"), "");
}

TEST_F(ReplayTool, CountsWhatStagesDrop) {
    write("in", std::string(kGoodLine) + "\n" + kGoodLine);
    const auto guard = std::make_shared<fakes::FakeGuard>(std::make_shared<std::vector<std::string>>(), "guard!");
    const auto processor = TelemetryEventProcessorBuilder(nullptr, nullptr).addGuard(guard).build();
    RunOptions options;
    options.inputs = {folder_ / "in"};
    options.output = folder_ / "out";
    RunFiles files = openRunFiles(options);
    Console console(true);
    Replay replay(files, *processor, console, Replay::BadLines::Continue);
    replay.run();
    EXPECT_EQ(replay.counts().dropped, 2U);
    EXPECT_EQ(replay.counts().kept, 0U);
}

}  // namespace Velo::OS::Telemetry::replay
