#include "replay/Expectations.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "replay/Glob.h"
#include "replay/Suggestion.h"
#include "telemetry/TelemetryEventBundle.h"
#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry::replay {

TEST(Expectations, SayWhatDoesNotHold) {
    const auto file = std::filesystem::temp_directory_path() / ("expectations." + std::to_string(::getpid()));
    std::string ten, tenFailures;
    for (const std::string name : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
        ten += '"' + name + "\":{},";
        tenFailures += '.' + name + ": no event has such a name|";
    }
    const std::pair<std::string, std::string> cases[] = {
        {R"("app":{"logged":4,"kept":2,"bad":1,"dropped":{"min":1,"max":1,"state.disabled":1,"pathway_guard":0}})", ""},
        {R"("app":{"kept":{"min":3},"dropped":{"max":0},"bad":{"min":2,"max":3}})",
         ".app.kept: expected at least 3, seen 2|.app.bad: expected 2 to 3, seen 1|.app.dropped: expected 0, seen 1|"},
        {R"("a??":{"data":{"n":{"type":"integer"},"u":{"value":5},"x":{"present":false}},"header":{"h":{"value":"v"}}})",
         ""},
        {R"("*":{"data":{"n":{"value":1},"u":{"one_of":[4,"5"]},"x":{"type":"null"}},"header":{"h":{"type":"array"}}})",
         ".*.data.n: expected 1, seen 2 at in:2; wrong in 1 of 2 kept events|"
         ".*.data.u: expected one of [4,\"5\"], seen 5 at in:1; wrong in 2 of 2 kept events|"
         ".*.data.x: expected type null, seen nothing at in:1; wrong in 2 of 2 kept events|"
         ".*.header.h: expected type array, seen \"v\" at in:1; wrong in 2 of 2 kept events|"},
        {R"("lost":{"data":{"n":{"present":false}}},"none":{"kept":0},"ap*d":{"kept":0,"logged":{"max":1}},"pap":{})",
         ".ap*d: no event has such a name|.lost.data.n: expected nothing, but no event was kept|"
         ".pap: no event has such a name; did you mean \"app\"?|"},
        {ten + R"("pap":{})", tenFailures + ".pap: no event has such a name|"},
    };
    for (const auto& [events, expected] : cases) {
        std::ofstream(file) << "\n{\"events\":{" << events << "}}";
        InputFile input(file);
        Expectations expectations = readExpectations(input);
        const auto observe = [&](const std::string& name, uint64_t line, const Outcome& outcome, int n) {
            TelemetryEventBundle kept(name, fakes::parsed("{\"n\":" + std::to_string(n) + "}"), 1000,
                                      IntakeFormat::JsonBundle);
            kept.addUInt("u", 5);
            kept.addProperty("h", "v");
            const bool isKept = std::holds_alternative<Kept>(outcome);
            expectations.observe({{"in", line}, false, name, 0, outcome, isKept ? &kept : nullptr, nullptr});
        };
        observe("app", 1, Kept{}, 1);
        observe("app", 2, Kept{}, 2);
        observe("app", 3, Dropped{fakes::parsed(R"({"guard":"g","reason":"state.disabled"})")}, 3);
        observe("app", 4, Failed{}, 4);
        observe("lost", 5, Unwritable{}, 5);
        std::string failures;
        for (const std::string& failure : expectations.failures()) {
            const std::string place = file.string() + ":2: events";
            ASSERT_TRUE(failure.starts_with(place)) << failure;
            failures += failure.substr(place.size()) + "|";
        }
        EXPECT_EQ(failures, expected) << events;
    }
    std::filesystem::remove(file);
}

TEST(Suggestion, IsTheNearestWordThatIsNear) {
    constexpr std::string_view kKnown[] = {"b", "kept", "bad", "dropped"};
    const std::pair<std::string, std::string> cases[] = {{"kpet", "kept"}, {"KEP", "kept"}, {"a", ""},
                                                         {"", ""},         {"kxxt", ""},    {"dorpepd", "dropped"}};
    for (const auto& [word, nearest] : cases) EXPECT_EQ(nearestWord(word, kKnown).value_or(""), nearest) << word;
}

TEST(Glob, TakesCharactersAndTriesEveryStar) {
    for (const char* pattern : {"*b*c", "a?b*", "***c", "a*?c", "*\u20acbxbc"})
        EXPECT_TRUE(matchesGlob(pattern, "a\u20acbxbc")) << pattern;
    for (const char* pattern : {"", "a", "a*x", "a??bxbc", "[a]*", "*bc?"})
        EXPECT_FALSE(matchesGlob(pattern, "a\u20acbxbc")) << pattern;
}

}  // namespace Velo::OS::Telemetry::replay
