#include "replay/TimeBuckets.h"

#include <gtest/gtest.h>

namespace Velo::OS::Telemetry::replay {

TEST(TimeBuckets, KeepEveryTimeOfAPlausibleClockInTheBucketThatHoldsIt) {
    constexpr int64_t kHourMs = 3'600'000;
    struct Case {
        std::vector<int64_t> times;
        int64_t startMs, widthMs;
        std::vector<uint64_t> counts;
    };
    for (const Case& c :
         {Case{{INT64_MIN, -1, 0, TimeBuckets::kMaxTimeMs + 1, INT64_MAX}, 0, 1, {}}, Case{{7, 9, 7}, 7, 1, {2, 0, 1}},
          Case{{100, 199, 99}, 95, 5, {1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
          Case{{80 * 24 * kHourMs, 1, TimeBuckets::kMaxTimeMs}, 0, 64 * 24 * kHourMs, {1, 1}}}) {
        TimeBuckets buckets;
        const size_t series = buckets.addSeries();
        for (const int64_t time : c.times) buckets.add(series, time);
        EXPECT_EQ(buckets.startMs(), c.startMs);
        EXPECT_EQ(buckets.widthMs(), c.widthMs);
        std::vector<uint64_t> counts = buckets.counts(series);
        if (c.widthMs > kHourMs) counts.resize(2);
        EXPECT_EQ(counts, c.counts);
    }
}

}  // namespace Velo::OS::Telemetry::replay
