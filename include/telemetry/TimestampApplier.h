#pragma once

#include <memory>

#include "telemetry/AdjustedClock.h"
#include "telemetry/IApplier.h"

namespace Velo::OS::Telemetry {

/// "timestamp_applier": adds "timestamp", the time at which the event was created, in ms on the adjusted clock, and
/// "adjusted", whether that is wall-clock time. An event from before that clock's zero, or from the future, gets 0.
class TELEMETRY_EXPORT TimestampApplier : public IApplier {
public:
    /// Must not be null.
    explicit TimestampApplier(std::shared_ptr<AdjustedClock> clock);

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<AdjustedClock> clock_;
};

}  // namespace Velo::OS::Telemetry
