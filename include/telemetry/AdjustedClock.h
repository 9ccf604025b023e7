#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "telemetry/Export.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

/// The time as events are to state it. The layout is ABI.
struct AdjustedTimestamp {
    bool isAdjusted;       // whether `timestampMs` is wall-clock time
    uint64_t timestampMs;  // ms since 1970 (CLOCK_REALTIME_COARSE), or else monotonic (CLOCK_MONOTONIC)
    uint64_t bootTimeMs;   // ms since boot, suspend included (CLOCK_BOOTTIME)
};

/// Takes the time of events from the monotonic clock until the device's wall clock can be trusted, and from the wall
/// clock afterwards. Switching measures the adjustment, the difference between the two, by which consumers shift
/// earlier timestamps. State and adjustment are persisted in the settings.
///
/// Safe to call from several threads at once; one that asks while another adjusts may see the switch before the
/// adjustment. A clock that cannot be read is logged and counts as 0. Virtual slots and layout are ABI.
class TELEMETRY_EXPORT AdjustedClock {
public:
    /// Starts in the persisted state. Deliberate: the persisted adjustment is not loaded, so a clock that starts
    /// adjusted reports an adjustment of 0.
    AdjustedClock();
    virtual ~AdjustedClock() = default;

    virtual AdjustedTimestamp getTimestamp() const;
    /// Wall-clock minus monotonic milliseconds when the clock was adjusted; none while it is not.
    virtual std::optional<int64_t> getAdjustmentInMs() const;
    /// Switches to the wall clock, measures the adjustment and persists both. Does nothing if adjusted already.
    virtual void adjustClock();
    /// Switches back to the monotonic clock and persists that. The adjustment stays as it is, out of sight.
    virtual void resetIsAdjusted();
    /// The settings in which the state is persisted, for test doubles to replace. The constructor does not ask it: a
    /// clock starts by `TelemetrySettingsManager::instance()`.
    virtual std::shared_ptr<ITelemetrySettingsManager> getSettings() const;

private:
    std::atomic<bool> isAdjusted_;
    std::atomic<int64_t> adjustmentMs_{0};
};

}  // namespace Velo::OS::Telemetry
