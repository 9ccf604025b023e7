#include "replay/TimeBuckets.h"

#include <algorithm>
#include <iterator>

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr int64_t kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute, kDay = 24 * kHour;

/// Widths that people count in. Each divides the next, so that whole buckets merge.
constexpr int64_t kWidthsMs[] = {1,         5,           10,           50,           100,
                                 500,       kSecond,     5 * kSecond,  15 * kSecond, 30 * kSecond,
                                 kMinute,   5 * kMinute, 15 * kMinute, 30 * kMinute, kHour,
                                 3 * kHour, 6 * kHour,   12 * kHour,   kDay,         2 * kDay,
                                 4 * kDay,  8 * kDay,    16 * kDay,    32 * kDay,    64 * kDay};
static_assert(TimeBuckets::kMaxTimeMs / kWidthsMs[std::size(kWidthsMs) - 1] < int64_t{TimeBuckets::kMaxBuckets});

}  // namespace

size_t TimeBuckets::addSeries() {
    series_.emplace_back(kMaxBuckets);
    return series_.size() - 1;
}

bool TimeBuckets::add(size_t series, int64_t timeMs) {
    if (timeMs <= 0 || timeMs > kMaxTimeMs) return false;
    if (!span_ || timeMs < span_->firstMs || timeMs > span_->lastMs) makeRoom(timeMs);
    ++series_[series][static_cast<size_t>(timeMs / widthMs() - firstBucket_)];
    return true;
}

int64_t TimeBuckets::widthMs() const { return kWidthsMs[step_]; }

size_t TimeBuckets::size() const {
    return span_ ? static_cast<size_t>(span_->lastMs / widthMs() - firstBucket_) + 1 : 0;
}

std::vector<uint64_t> TimeBuckets::counts(size_t series) const {
    const Buckets& buckets = series_[series];
    return {buckets.begin(), buckets.begin() + static_cast<std::ptrdiff_t>(size())};
}

/// Widens the span, and the buckets until they hold it.
void TimeBuckets::makeRoom(int64_t timeMs) {
    const int64_t oldWidth = widthMs(), oldFirst = firstBucket_;
    span_ = span_ ? Span{std::min(span_->firstMs, timeMs), std::max(span_->lastMs, timeMs)} : Span{timeMs, timeMs};
    while (span_->lastMs / widthMs() - span_->firstMs / widthMs() >= int64_t{kMaxBuckets}) ++step_;
    firstBucket_ = span_->firstMs / widthMs();
    if (widthMs() == oldWidth && firstBucket_ == oldFirst) return;

    for (Buckets& buckets : series_) {
        Buckets moved(kMaxBuckets);
        for (size_t i = 0; i < kMaxBuckets; ++i) {
            if (buckets[i] == 0) continue;
            const int64_t startMs = (oldFirst + static_cast<int64_t>(i)) * oldWidth;
            moved[static_cast<size_t>(startMs / widthMs() - firstBucket_)] += buckets[i];
        }
        buckets = std::move(moved);
    }
}

}  // namespace Velo::OS::Telemetry::replay
