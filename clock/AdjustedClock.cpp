#include "telemetry/AdjustedClock.h"

#include <android/log.h>

#include <cerrno>
#include <cstring>

#include "clock/ClockArithmetic.h"
#include "telemetry/TelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

namespace {

uint64_t readMs(clockid_t clock) {
    timespec reading{};
    if (clock_gettime(clock, &reading) == 0) return toMilliseconds(reading);
    __android_log_print(ANDROID_LOG_ERROR, "TelemetryService", "error getting time: %s", strerror(errno));
    return 0;
}

uint64_t wallClockMs() { return readMs(CLOCK_REALTIME_COARSE); }
uint64_t monotonicMs() { return readMs(CLOCK_MONOTONIC); }

}  // namespace

AdjustedClock::AdjustedClock() : isAdjusted_(TelemetrySettingsManager::instance()->isClockAdjusted()) {}

AdjustedTimestamp AdjustedClock::getTimestamp() const {
    const bool isAdjusted = isAdjusted_;
    return {isAdjusted, isAdjusted ? wallClockMs() : monotonicMs(), readMs(CLOCK_BOOTTIME)};
}

std::optional<int64_t> AdjustedClock::getAdjustmentInMs() const {
    if (!isAdjusted_) return std::nullopt;
    return adjustmentMs_;
}

void AdjustedClock::adjustClock() {
    if (isAdjusted_.exchange(true)) return;  // whoever was first measures
    const uint64_t wallMs = wallClockMs();
    adjustmentMs_ = adjustmentBetween(wallMs, monotonicMs());
    getSettings()->setClockAdjusted(true);
    getSettings()->setClockAdjustmentMs(adjustmentMs_);
}

void AdjustedClock::resetIsAdjusted() {
    isAdjusted_ = false;
    getSettings()->setClockAdjusted(false);
}

std::shared_ptr<ITelemetrySettingsManager> AdjustedClock::getSettings() const {
    return TelemetrySettingsManager::instance();
}

}  // namespace Velo::OS::Telemetry
