#include "processor/TraceSlice.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "tests/fakes/Slices.h"

namespace Velo::OS::Telemetry {

using Threads = std::multiset<std::string>;

TEST(TraceSlice, SlicesNestWithinTheirThreadAndEndOnce) {
    host::startTracing();
    {
        TraceSlice outer("o");
        TraceSlice inner("Monitor: ", "m");
        inner.end();
        inner.end();
        struct AtTheEnd {  // when the recorder has destroyed what the thread had of its own
            ~AtTheEnd() { TraceSlice("its end"); }
        };
        std::thread([] {
            thread_local AtTheEnd atTheEnd;
            TraceSlice("other thread");
        }).join();
    }
    EXPECT_EQ(fakes::recordedSlices(), (Threads{"<o <Monitor: m > > ", "<other thread > <its end > "}));
    EXPECT_TRUE(host::isTraceComplete());
}

TEST(TraceSlice, EachEdgeIsRecordedByTheStateOfItsOwnMoment) {
    const struct {
        bool enabledAtBegin, enabledAtEnd;
        Threads expected;
    } cases[] = {{true, true, {"<a <b > > "}}, {true, false, {"<a <b "}}, {false, true, {"> > "}}, {false, false, {}}};
    for (const auto& c : cases) {
        host::startTracing();  // forgets the recording of the row before
        if (!c.enabledAtBegin) host::stopTracing();
        {
            TraceSlice a("a");
            TraceSlice b("", "b");
            c.enabledAtEnd ? host::startTracing() : host::stopTracing();
        }
        EXPECT_EQ(fakes::recordedSlices(), c.expected) << c.enabledAtBegin << c.enabledAtEnd;
    }
}

TEST(TraceSlice, TheRecordersFileIsJsonThatViewersOpen) {
    if (host::traceBackend() == "perfetto") GTEST_SKIP() << "another backend, another format";
    EXPECT_EQ(host::traceBackend(), "recorder");
    {
        TraceSlice begunBefore("x");
        host::startTracing();
        const TraceSlice said("say \"a\"\n\xC3\xA9\xFF");  // the last byte is no UTF-8
        const auto begun = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() - begun < std::chrono::milliseconds(2)) continue;
    }
    host::stopTracing();
    std::ofstream full("/dev/full");
    EXPECT_FALSE(host::writeTrace(full));
    std::stringstream file;
    ASSERT_TRUE(host::writeTrace(file));

    Json::Value trace;
    file >> trace;
    const Json::Value& events = trace["traceEvents"];
    ASSERT_EQ(events.size(), 2U) << "an end without its begin is left out";
    EXPECT_EQ(events[0]["name"], "say \"a\"\n\xC3\xA9\xEF\xBF\xBD");
    EXPECT_EQ(events[0]["ph"].asString() + events[1]["ph"].asString(), "BE");
    const double lasted = events[1]["ts"].asDouble() - events[0]["ts"].asDouble();
    EXPECT_TRUE(lasted >= 2000 && lasted < 2e6) << lasted << " us";
    for (const Json::Value& event : events) {
        EXPECT_EQ(event["cat"], "telemetry");
        EXPECT_TRUE(event["pid"].isInt() && event["tid"].isInt() && event["ts"].isDouble());
    }
}

}  // namespace Velo::OS::Telemetry
