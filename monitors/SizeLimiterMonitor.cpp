#include "telemetry/SizeLimiterMonitor.h"

#include <android/log.h>

#include <utility>

#include "monitors/MonitorEvent.h"

namespace Velo::OS::Telemetry {

SizeLimiterMonitor::SizeLimiterMonitor(MonitorEventCallback callback)
    : IMonitor("size_limiter_monitor", std::move(callback)) {}

std::unique_ptr<TelemetryEvent> SizeLimiterMonitor::monitor(std::unique_ptr<TelemetryEvent> event) {
    constexpr size_t kMaxSize = 2560;
    const size_t size = event->size();
    if (size <= kMaxSize) return event;

    const std::string name = event->name();
    // Deliberate: nothing is rejected here.
    __android_log_print(ANDROID_LOG_WARN, "TelemetryService",
                        "Event exceeds max size, rejecting, event: %s, size: %zu, max: %zu", name.c_str(), size,
                        kMaxSize);
    MonitorEvent breach;
    breach.putString("event", name);
    breach.putLong("size", static_cast<int64_t>(size));
    breach.send("event_size_limit_breach", event->uid(), callback_);
    return event;
}

}  // namespace Velo::OS::Telemetry
