#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Velo::OS::Telemetry::replay {

/// Counts of events over time, in series that share one row of buckets. The buckets grow wider as the span of times
/// grows, so memory hangs on the number of series alone.
class TimeBuckets {
public:
    /// A day in buckets of 15 minutes, with room for one that begins off the hour.
    static constexpr size_t kMaxBuckets = 100;

    /// Ten years in ms. No device has been up for longer: who says so means another clock, and one such event would
    /// leave a single bucket to all others.
    static constexpr int64_t kMaxTimeMs = 10LL * 365 * 24 * 3600 * 1000;

    /// The number of a new series, for the calls below. Numbers begin at 0.
    size_t addSeries();

    /// Counts an event at this time, in ms since boot. False, and not counted, if it is not in 1 to `kMaxTimeMs`; 0
    /// stands for an unknown time.
    bool add(size_t series, int64_t timeMs);

    int64_t widthMs() const;
    /// Where the first bucket begins, in ms since boot: a multiple of the width.
    int64_t startMs() const { return firstBucket_ * widthMs(); }
    /// Of the buckets from the first time to the last; none if there was no time.
    size_t size() const;
    /// One for each bucket.
    std::vector<uint64_t> counts(size_t series) const;

private:
    using Buckets = std::vector<uint64_t>;  // `kMaxBuckets` of them

    void makeRoom(int64_t timeMs);

    std::vector<Buckets> series_;
    struct Span {
        int64_t firstMs, lastMs;
    };
    std::optional<Span> span_;  // of the times so far
    size_t step_ = 0;           // on the ladder of widths
    int64_t firstBucket_ = 0;   // in widths since boot
};

}  // namespace Velo::OS::Telemetry::replay
