#include "telemetry/TelemetryEventProcessor.h"

#include <gtest/gtest.h>

#include "telemetry/ApplierBlocklist.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "tests/fakes/FakeStages.h"
#include "tests/fakes/Slices.h"

namespace Velo::OS::Telemetry {

using Builder = TelemetryEventProcessorBuilder;
using Lines = std::vector<std::string>;

const std::string kBlockedEvent = "telemetry_event_filtering_performance";
constexpr char kPanic[] = "TelemetryService F .*requireValue:1066 PANIC";

class Pipeline : public testing::Test {
protected:
    /// Adds stages, each given as its kind (m, g or a), a colon and its name.
    void add(Builder& builder, std::initializer_list<std::string> stages) {
        for (const std::string& stage : stages) {
            const std::string name = stage.substr(2);
            if (stage[0] == 'm') builder.addMonitor(std::make_shared<fakes::FakeMonitor>(calls, name));
            if (stage[0] == 'g') builder.addGuard(std::make_shared<fakes::FakeGuard>(calls, name));
            if (stage[0] == 'a') builder.addApplier(std::make_shared<fakes::FakeApplier>(calls, name));
        }
    }

    EventResult process(std::initializer_list<std::string> stages, const std::string& name = "e") {
        Builder builder(tracing, counters);
        add(builder, stages);
        auto event = std::make_unique<TelemetryEventBundle>(name, 7U, false);
        given = event.get();
        return std::move(builder).build()->processEvent(std::move(event));
    }

    fakes::Calls calls = std::make_shared<Lines>();
    std::shared_ptr<fakes::FakeManagers> tracing = std::make_shared<fakes::FakeManagers>(calls);
    std::shared_ptr<fakes::FakeManagers> counters = tracing;
    TelemetryEvent* given = nullptr;
};

TEST_F(Pipeline, RunsMonitorsThenGuardsThenAppliersInTheOrderAdded) {
    EventResult result = process({"a:a1", "g:g1", "m:m1", "m:m2", "g:g2", "a:a2"});
    EXPECT_EQ(result.takeValue().get(), given);
    Lines expected;
    for (const std::string name : {"m1", "m2", "g1", "g2", "a1", "a2"}) {
        expected.insert(expected.end(), {"trace e 7 " + name, "count processor_" + name + " 1", "run " + name});
    }
    EXPECT_EQ(*calls, expected);
}

TEST_F(Pipeline, ErrorsEndIt) {
    tracing = nullptr;
    EXPECT_EQ(process({"m:m", "g:g!", "g:later", "a:a"}).error(), std::error_code(22, std::generic_category()));
    EXPECT_EQ(*calls, (Lines{"count processor_m 1", "run m", "count processor_g! 1", "run g!"}));
    counters = nullptr;
    EXPECT_EQ(process({"a:a!", "a:later"}).error(), fakes::kFakeError) << "unlike a guard's, unchanged";
    EXPECT_EQ(calls->back(), "run a!");
}

TEST_F(Pipeline, ABlockedApplierIsSkippedUnseen) {
    EXPECT_TRUE(process({"a:identity_applier", "a:a"}, kBlockedEvent).hasValue());
    EXPECT_EQ(*calls, (Lines{"trace " + kBlockedEvent + " 7 a", "count processor_a 1", "run a"}));
    EXPECT_TRUE(process({"a:identity_applier"}).hasValue());
    EXPECT_EQ(calls->back(), "run identity_applier") << "it blocks no other event";
}

TEST_F(Pipeline, OnlyTheSequenceNumberStageIsCountedWithItsEvent) {
    const std::string name = "seq_num_applier";
    EXPECT_TRUE(process({"m:" + name, "g:" + name, "a:" + name, "a:" + name + "2"}).hasValue());
    std::erase_if(*calls, [](const std::string& call) { return call.starts_with("run"); });
    const std::string trace = "trace e 7 " + name, counter = "count processor_" + name;
    EXPECT_EQ(*calls, (Lines{trace, counter + " 1", trace, counter + " 1", trace, counter + " 1 of e", trace + "2",
                             counter + "2 1"}));
}

TEST_F(Pipeline, NothingWhereAValueIsNeededPanics) {
    EXPECT_DEATH(process({"g:g?"}).state(), kPanic);
    EXPECT_DEATH(process({"a:a?"}).state(), kPanic);

    EventResult result(std::make_unique<TelemetryEventBundle>("e", 1U, false));
    EXPECT_EQ(result.error(), std::error_code());
    const EventResult movedTo(std::move(result));
    EXPECT_TRUE(movedTo.hasValue());
    EXPECT_EQ(result.state(), EventResult::State::Empty);  // NOLINT(bugprone-use-after-move)
    result = EventResult(std::make_unique<TelemetryEventBundle>("e", 1U, false));
    auto& self = result;
    result = std::move(self);
    EXPECT_NE(result.takeValue(), nullptr);
    EXPECT_DEATH(result.takeValue(), kPanic);
    result = fakes::kFakeError;
    EXPECT_DEATH(result.takeValue(), kPanic);
}

TEST_F(Pipeline, MovingLeavesAnEmptyProcessorAndASpentBuilder) {
    Builder first(tracing, counters);
    add(first, {"m:m1", "g:g", "a:a"});
    Builder builder(nullptr, nullptr);
    builder = std::move(first).addMonitor(std::make_shared<fakes::FakeMonitor>(calls, "m2"));
    const std::shared_ptr<TelemetryEventProcessor> built = std::move(builder).build();
    EXPECT_EQ(std::move(builder).build(), nullptr);  // NOLINT(bugprone-use-after-move): a spent builder

    TelemetryEventProcessor moved(nullptr, nullptr);
    moved = std::move(*built);
    auto& self = moved;
    moved = std::move(self);
    for (const TelemetryEventProcessor* processor : {built.get(), &moved}) {
        EXPECT_TRUE(processor->processEvent(std::make_unique<TelemetryEventBundle>("e", 7U, false)).hasValue());
    }
    EXPECT_EQ(*calls, (Lines{"trace e 7 m1", "count processor_m1 1", "run m1",  //
                             "trace e 7 m2", "count processor_m2 1", "run m2",  //
                             "trace e 7 g", "count processor_g 1", "run g",     //
                             "trace e 7 a", "count processor_a 1", "run a"}));
}

TEST_F(Pipeline, SlicesEncloseTheEventAndEveryStage) {
    host::startTracing();
    EXPECT_TRUE(process({"m:m", "a:identity_applier", "a:a"}, kBlockedEvent).hasValue());
    EXPECT_TRUE(process({"g:g!"}).hasError());
    TelemetryEventBundle("e", 7, false).getJsonString();
    EXPECT_EQ(fakes::recordedSlices(),
              std::multiset<std::string>{
                  "<Processing: " + kBlockedEvent +
                  " <Monitor: m > <Applier: identity_applier <Applier Blocked: identity_applier > > <Applier: a > > "
                  "<Processing: e <Guard: g! > > <getJsonString > "});
}

TEST(ApplierBlocklist, ComparesExactly) {
    const auto isBlocked = ApplierBlocklist::isApplierBlocked;
    EXPECT_TRUE(isBlocked("identity_applier", kBlockedEvent));
    EXPECT_TRUE(isBlocked("device_info_applier", kBlockedEvent));
    for (const char* other : {"seq_num_applier", "Identity_applier", ""}) EXPECT_FALSE(isBlocked(other, kBlockedEvent));
    for (const char* other : {"", "telemetry_event_filtering"}) EXPECT_FALSE(isBlocked("identity_applier", other));
}

}  // namespace Velo::OS::Telemetry
