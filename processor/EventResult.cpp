#include "telemetry/EventResult.h"

#include <android/log.h>

#include <utility>

namespace Velo::OS::Telemetry {

std::error_code EventResult::error() const {
    const auto* code = std::get_if<std::error_code>(&content_);
    return code ? *code : std::error_code();
}

std::unique_ptr<TelemetryEvent> EventResult::takeValue() {
    auto* value = std::get_if<std::unique_ptr<TelemetryEvent>>(&content_);
    // Deliberate: the name and the line are those that crash reports are grouped by, wherever this code stands.
    if (!value) __android_log_assert(nullptr, "TelemetryService", "%s:%u PANIC", "requireValue", 1066U);
    std::unique_ptr<TelemetryEvent> event = std::move(*value);
    content_.emplace<std::monostate>();
    return event;
}

}  // namespace Velo::OS::Telemetry
