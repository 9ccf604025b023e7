#include "telemetry/TimestampApplier.h"

#include <utility>

#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kAdjusted = immortal<std::string>("adjusted");
const std::string& kTimestamp = immortal<std::string>("timestamp");

}  // namespace

TimestampApplier::TimestampApplier(std::shared_ptr<AdjustedClock> clock)
    : IApplier("timestamp_applier"), clock_(std::move(clock)) {}

EventResult TimestampApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    const AdjustedTimestamp now = clock_->getTimestamp();
    event->addBool(kAdjusted, now.isAdjusted);
    // Deliberate: the age of an event from the future wraps to a very large one, which makes its timestamp 0.
    const uint64_t ageMs = now.bootTimeMs - static_cast<uint64_t>(event->clientCreatedTime());
    event->addULong(kTimestamp, now.timestampMs < ageMs ? 0 : now.timestampMs - ageMs);
    return event;
}

}  // namespace Velo::OS::Telemetry
