#include <gtest/gtest.h>

#include <limits>

#include "clock/ClockArithmetic.h"
#include "platform/logging/HostLoggerBackend.h"
#include "telemetry/AdjustedClock.h"
#include "telemetry/EventCacheState.h"
#include "tests/fakes/FakeClock.h"
#include "tests/fakes/FakeTelemetrySettings.h"
#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using Lines = std::vector<std::string>;
using fakes::clocksNs, fakes::kBoot, fakes::kMonotonic, fakes::kWall;

constexpr int64_t kSecond = 1'000'000'000;  // in ns
constexpr int64_t kMax = std::numeric_limits<int64_t>::max();

TEST(ClockArithmetic, ReadingsAreMillisecondsByWayOfADouble) {
    const std::pair<timespec, uint64_t> cases[] = {
        {{0, 999'999}, 0},
        {{0, 1'000'000}, 1},
        {{1, 999'999'999}, 1999},
        {{1'699'999'999, 999'999'000}, 1'699'999'999'999},
        {{1'699'999'999, 999'999'999}, 1'700'000'000'000},
        {{1'700'000'000, 2'000'000}, 1'700'000'000'001},
        {{-1, 0}, 18'446'744'072'709},
        {{std::numeric_limits<time_t>::max(), 0}, 18'446'744'072'709},
    };
    for (const auto& [reading, ms] : cases) EXPECT_EQ(toMilliseconds(reading), ms) << reading.tv_sec;
}

TEST(ClockArithmetic, DifferencesBeyondTheSignedRangeAreClamped) {
    const auto max = static_cast<uint64_t>(kMax);
    const struct {
        uint64_t wallMs, monotonicMs;
        int64_t adjustmentMs;
        const char* loggedDifference;
    } cases[] = {
        {7, 7, 0, nullptr},
        {9, 7, 2, nullptr},
        {7, 9, -2, nullptr},
        {max + 3, 3, kMax, nullptr},
        {3, max + 3, -kMax, nullptr},
        {max + 4, 3, kMax, "9223372036854775808"},
        {3, max + 4, -kMax, "9223372036854775808"},
        {2 * max + 1, 0, kMax, "18446744073709551615"},
    };
    fakes::LogCapture log;
    for (const auto& c : cases) {
        EXPECT_EQ(adjustmentBetween(c.wallMs, c.monotonicMs), c.adjustmentMs) << c.wallMs << " " << c.monotonicMs;
        const std::string message = "6 TelemetryService: Numerical overflow when attempting to clamp the timestamp: ";
        EXPECT_EQ(log.take(), c.loggedDifference ? Lines{message + c.loggedDifference} : Lines{});
    }
}

class Clock : public testing::Test {
protected:
    Clock() { clocksNs = {{kMonotonic, 4 * kSecond}, {kWall, 1'700'000'000 * kSecond}, {kBoot, 9 * kSecond}}; }
    ~Clock() override { clocksNs.clear(); }

    static void expectTime(const AdjustedClock& clock, bool adjusted, uint64_t timestampMs, uint64_t bootTimeMs) {
        const AdjustedTimestamp now = clock.getTimestamp();
        EXPECT_EQ(now.isAdjusted, adjusted);
        EXPECT_EQ(now.timestampMs, timestampMs);
        EXPECT_EQ(now.bootTimeMs, bootTimeMs);
    }

    std::shared_ptr<fakes::FakeTelemetrySettings> settings = fakes::FakeTelemetrySettings::install();
};

TEST_F(Clock, IsMonotonicUntilAdjustedAndMeasuresOnce) {
    fakes::WithOwnSettings<AdjustedClock> clock;
    expectTime(clock, false, 4000, 9000);
    EXPECT_EQ(clock.getAdjustmentInMs(), std::nullopt);

    fakes::clockReads.clear();
    clock.adjustClock();
    EXPECT_EQ(fakes::clockReads, (std::vector{kWall, kMonotonic}));
    EXPECT_EQ(clock.own->takeCalls(), (Lines{"setClockAdjusted 1", "setClockAdjustmentMs 1699999996000"}));
    EXPECT_EQ(clock.asked, 2) << "afresh for each";
    EXPECT_EQ(clock.getAdjustmentInMs(), 1'699'999'996'000);
    expectTime(clock, true, 1'700'000'000'000, 9000);

    clocksNs[kMonotonic] = 5 * kSecond;
    clock.adjustClock();
    EXPECT_EQ(clock.own->takeCalls(), Lines{});
    EXPECT_EQ(clock.getAdjustmentInMs(), 1'699'999'996'000);

    clock.resetIsAdjusted();
    EXPECT_EQ(clock.own->takeCalls(), Lines{"setClockAdjusted 0"});
    EXPECT_EQ(clock.getAdjustmentInMs(), std::nullopt);
    expectTime(clock, false, 5000, 9000);
    clock.adjustClock();
    EXPECT_EQ(clock.getAdjustmentInMs(), 1'699'999'995'000);
    EXPECT_EQ(settings->takeCalls(), Lines{});
}

TEST_F(Clock, StartsInThePersistedStateWithoutThePersistedAdjustment) {
    settings->clockAdjusted = true;
    settings->clockAdjustmentMs = 77;
    AdjustedClock clock;
    expectTime(clock, true, 1'700'000'000'000, 9000);
    EXPECT_EQ(clock.getAdjustmentInMs(), 0);
    clock.adjustClock();
    EXPECT_EQ(clock.getAdjustmentInMs(), 0);
    EXPECT_EQ(settings->takeCalls(), Lines{}) << "it is adjusted already";
    clock.resetIsAdjusted();
    EXPECT_EQ(settings->takeCalls(), Lines{"setClockAdjusted 0"});
}

TEST_F(Clock, AClockThatFailsIsLoggedAndShowsZero) {
    clocksNs = {{kMonotonic, 4 * kSecond}};
    AdjustedClock clock;
    fakes::LogCapture log;
    const std::string message = "6 TelemetryService: error getting time: Invalid argument";
    expectTime(clock, false, 4000, 0);
    EXPECT_EQ(log.take(), Lines{message});
    clock.adjustClock();
    EXPECT_EQ(clock.getAdjustmentInMs(), -4000);
    EXPECT_EQ(log.take(), Lines{message});
}

TEST_F(Clock, TheEventCacheIsAdjustedUntilThatSucceedsOnce) {
    std::vector<long> asked;
    bool succeeds = false;
    EventCacheState();  // nobody to ask yet
    host::setAdjustTimeHandler([&](long adjustmentMs) {
        asked.push_back(adjustmentMs);
        return succeeds;
    });
    settings->clockAdjustmentMs = -123456789012;
    EventCacheState state;
    EXPECT_EQ(settings->takeCalls(), Lines{}) << "not before the backend has succeeded";
    succeeds = true;
    state.adjustTimeIfNeeded();
    EXPECT_EQ(settings->takeCalls(), Lines{"setEventCacheTimeAdjusted 1"});
    EXPECT_EQ(asked, (std::vector<long>{-123456789012, -123456789012}));

    settings->eventCacheAdjusted = true;
    EventCacheState();
    EXPECT_EQ(asked.size(), 2U);
    host::setAdjustTimeHandler(nullptr);
}

}  // namespace Velo::OS::Telemetry
