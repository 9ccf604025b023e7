#include "clock/ClockArithmetic.h"

#include <android/log.h>

#include <limits>
#include <string>

namespace Velo::OS::Telemetry {

namespace {

int64_t clampedToSigned(uint64_t differenceMs) {
    constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
    if (differenceMs <= static_cast<uint64_t>(kMax)) return static_cast<int64_t>(differenceMs);
    __android_log_print(ANDROID_LOG_ERROR, "TelemetryService",
                        "Numerical overflow when attempting to clamp the timestamp: %s",
                        std::to_string(differenceMs).c_str());
    return kMax;
}

}  // namespace

uint64_t toMilliseconds(const timespec& reading) {
    const uint64_t ns = static_cast<uint64_t>(reading.tv_sec) * 1'000'000'000U + static_cast<uint64_t>(reading.tv_nsec);
    // Deliberate: by way of doubles, whose rounding takes a wall clock's reading within about 256 ns of the edge of a
    // millisecond to either side of it.
    return static_cast<uint64_t>(static_cast<double>(ns) / 1e6);
}

int64_t adjustmentBetween(uint64_t wallMs, uint64_t monotonicMs) {
    if (wallMs < monotonicMs) return -clampedToSigned(monotonicMs - wallMs);
    return clampedToSigned(wallMs - monotonicMs);
}

}  // namespace Velo::OS::Telemetry
