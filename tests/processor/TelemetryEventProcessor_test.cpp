#include "telemetry/TelemetryEventProcessor.h"

#include <gtest/gtest.h>

#include "telemetry/ApplierBlocklist.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "tests/fakes/FakeStages.h"
#include "tests/fakes/Slices.h"

namespace Velo::OS::Telemetry {

using fakes::FakeApplier;
using fakes::FakeGuard;
using fakes::FakeMonitor;
using Builder = TelemetryEventProcessorBuilder;
using Lines = std::vector<std::string>;

const std::string kBlockedEvent = "telemetry_event_filtering_performance";

class Pipeline : public testing::Test {
protected:
    template <typename Stage>
    std::shared_ptr<Stage> stage(const char* name) {
        return std::make_shared<Stage>(calls, name);
    }

    EventResult process(Builder&& builder, const std::string& name = "e") {
        auto event = std::make_unique<TelemetryEventBundle>(name, 7U, false);
        given = event.get();
        return std::move(builder).build()->processEvent(std::move(event));
    }

    fakes::Calls calls = std::make_shared<Lines>();
    std::shared_ptr<fakes::FakeManagers> managers = std::make_shared<fakes::FakeManagers>(calls);
    TelemetryEvent* given = nullptr;
};

TEST_F(Pipeline, RunsMonitorsThenGuardsThenAppliersInTheOrderAdded) {
    Builder first(managers, managers);
    first.addApplier(stage<FakeApplier>("a1")).addGuard(stage<FakeGuard>("g1")).addMonitor(stage<FakeMonitor>("m1"));
    Builder chain(nullptr, nullptr);
    chain = std::move(first).addMonitor(stage<FakeMonitor>("m2")).addGuard(stage<FakeGuard>("g2"));
    EventResult result = process(std::move(chain).addApplier(stage<FakeApplier>("a2")));
    EXPECT_EQ(result.takeValue().get(), given);
    Lines expected;
    for (const std::string name : {"m1", "m2", "g1", "g2", "a1", "a2"}) {
        expected.insert(expected.end(), {"trace e 7 " + name, "count processor_" + name + " 1", "run " + name});
    }
    EXPECT_EQ(*calls, expected);
}

TEST_F(Pipeline, RunsWithoutManagersAndWithoutStages) {
    EXPECT_EQ(process({nullptr, nullptr}).takeValue().get(), given);

    Builder silent(nullptr, nullptr);
    silent.addMonitor(stage<FakeMonitor>("m")).addGuard(stage<FakeGuard>("g"));
    EXPECT_TRUE(process(std::move(silent).addApplier(stage<FakeApplier>("seq_num_applier"))).hasValue());
    EXPECT_EQ(*calls, (Lines{"run m", "run g", "run seq_num_applier"}));
}

TEST_F(Pipeline, ARejectionIsInvalidArgumentWhateverTheGuardSays) {
    const auto guard = stage<FakeGuard>("g");
    guard->error = std::make_error_code(std::io_errc::stream);
    Builder builder(managers, managers);
    builder.addMonitor(stage<FakeMonitor>("m")).addGuard(guard).addGuard(stage<FakeGuard>("later"));
    EXPECT_EQ(process(std::move(builder).addApplier(stage<FakeApplier>("a"))).error(),
              std::error_code(22, std::generic_category()));
    EXPECT_EQ(*calls, (Lines{"trace e 7 m", "count processor_m 1", "run m",  //
                             "trace e 7 g", "count processor_g 1", "run g"}));
}

TEST_F(Pipeline, AnAppliersErrorIsReturnedUnchanged) {
    const auto applier = stage<FakeApplier>("a");
    applier->error = std::make_error_code(std::io_errc::stream);
    Builder builder(nullptr, nullptr);
    builder.addApplier(applier).addApplier(stage<FakeApplier>("later"));
    EXPECT_EQ(process(std::move(builder)).error(), applier->error);
    EXPECT_EQ(*calls, Lines{"run a"});
}

TEST_F(Pipeline, ABlockedApplierIsSkippedUnseen) {
    Builder builder(managers, managers);
    builder.addApplier(stage<FakeApplier>("identity_applier")).addApplier(stage<FakeApplier>("a"));
    EXPECT_TRUE(process(std::move(builder), kBlockedEvent).hasValue());
    EXPECT_EQ(*calls, (Lines{"trace " + kBlockedEvent + " 7 a", "count processor_a 1", "run a"}));
}

TEST_F(Pipeline, OnlyTheSequenceNumberStageIsCountedWithItsEvent) {
    Builder builder(nullptr, managers);
    builder.addMonitor(stage<FakeMonitor>("seq_num_applier")).addGuard(stage<FakeGuard>("seq_num_applier"));
    for (const char* name : {"seq_num_applier", "seq_num_applier2", "seq_num_applie"}) {
        builder.addApplier(stage<FakeApplier>(name));
    }
    EXPECT_TRUE(process(std::move(builder)).hasValue());
    std::erase_if(*calls, [](const std::string& call) { return call.starts_with("run"); });
    EXPECT_EQ(*calls, (Lines{"count processor_seq_num_applier 1", "count processor_seq_num_applier 1",
                             "count processor_seq_num_applier 1 of e", "count processor_seq_num_applier2 1",
                             "count processor_seq_num_applie 1"}));
}

TEST_F(Pipeline, NothingWhereAValueIsNeededPanics) {
    constexpr char kPanic[] = "TelemetryService.*requireValue:1066 PANIC";
    const auto guard = stage<FakeGuard>("g");
    const auto applier = stage<FakeApplier>("a");
    guard->returnsNothing = applier->returnsNothing = true;
    EXPECT_DEATH(process(Builder(nullptr, nullptr).addGuard(guard)).state(), kPanic);
    EXPECT_DEATH(process(Builder(nullptr, nullptr).addApplier(applier)).state(), kPanic);

    EventResult result(std::make_unique<TelemetryEventBundle>("e", 1U, false));
    EXPECT_EQ(result.error(), std::error_code());
    EXPECT_NE(result.takeValue(), nullptr);
    EXPECT_EQ(result.state(), EventResult::State::Empty);
    EXPECT_DEATH(result.takeValue(), kPanic);
    result = std::make_error_code(std::errc::io_error);
    EXPECT_DEATH(result.takeValue(), kPanic);
}

TEST_F(Pipeline, MovingLeavesAnEmptyProcessorAndASpentBuilder) {
    Builder builder(managers, managers);
    const std::shared_ptr<TelemetryEventProcessor> built =
        std::move(builder).addMonitor(stage<FakeMonitor>("m")).build();
    EXPECT_EQ(std::move(builder).build(), nullptr);  // NOLINT(bugprone-use-after-move): a spent builder

    TelemetryEventProcessor moved(nullptr, nullptr);
    moved = std::move(*built);
    auto& self = moved;
    moved = std::move(self);
    for (const TelemetryEventProcessor* processor : {built.get(), &moved}) {
        EXPECT_TRUE(processor->processEvent(std::make_unique<TelemetryEventBundle>("e", 7U, false)).hasValue());
    }
    EXPECT_EQ(*calls, (Lines{"trace e 7 m", "count processor_m 1", "run m"}));
}

TEST_F(Pipeline, SlicesEncloseTheEventAndEveryStage) {
    Builder passing(nullptr, nullptr);
    passing.addMonitor(stage<FakeMonitor>("m"));
    passing.addApplier(stage<FakeApplier>("identity_applier")).addApplier(stage<FakeApplier>("a"));
    const auto guard = stage<FakeGuard>("g");
    guard->error = std::make_error_code(std::errc::io_error);
    host::startTracing();
    EXPECT_TRUE(process(std::move(passing), kBlockedEvent).hasValue());
    EXPECT_TRUE(process(Builder(nullptr, nullptr).addGuard(guard)).hasError());
    TelemetryEventBundle("e", 7, false).getJsonString();
    EXPECT_EQ(fakes::recordedSlices(),
              std::multiset<std::string>{
                  "<Processing: " + kBlockedEvent +
                  " <Monitor: m > <Applier: identity_applier <Applier Blocked: identity_applier > > <Applier: a > > "
                  "<Processing: e <Guard: g > > <getJsonString > "});
}

TEST(ApplierBlocklist, ComparesExactly) {
    const auto isBlocked = ApplierBlocklist::isApplierBlocked;
    EXPECT_TRUE(isBlocked("identity_applier", kBlockedEvent));
    EXPECT_TRUE(isBlocked("device_info_applier", kBlockedEvent));
    for (const char* other : {"seq_num_applier", "Identity_applier", ""}) EXPECT_FALSE(isBlocked(other, kBlockedEvent));
    for (const char* other : {"", "telemetry_event_filtering"}) EXPECT_FALSE(isBlocked("identity_applier", other));
}

}  // namespace Velo::OS::Telemetry
