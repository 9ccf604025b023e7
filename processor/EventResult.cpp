#include "telemetry/EventResult.h"

#include <android/log.h>

namespace Velo::OS::Telemetry {

EventResult& EventResult::operator=(EventResult&& other) noexcept {
    if (this == &other) return *this;
    clear();
    moveFrom(other);
    return *this;
}

/// Takes over what the other holds; this one is empty.
void EventResult::moveFrom(EventResult& other) noexcept {
    if (other.hasValue()) new (&event_) std::unique_ptr<TelemetryEvent>(std::move(other.event_));
    if (other.hasError()) new (&error_) std::error_code(other.error_);
    state_ = other.state_;
    other.clear();
}

void EventResult::clear() noexcept {
    if (hasValue()) event_.~unique_ptr();
    state_ = State::Empty;
}

std::unique_ptr<TelemetryEvent> EventResult::takeValue() {
    // Deliberate: the name and the line are those that crash reports are grouped by, wherever this code stands.
    if (!hasValue()) __android_log_assert(nullptr, "TelemetryService", "%s:%u PANIC", "requireValue", 1066U);
    std::unique_ptr<TelemetryEvent> event = std::move(event_);
    clear();
    return event;
}

}  // namespace Velo::OS::Telemetry
