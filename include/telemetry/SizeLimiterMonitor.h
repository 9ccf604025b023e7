#pragma once

#include <memory>

#include "telemetry/IMonitor.h"

namespace Velo::OS::Telemetry {

/// "size_limiter_monitor": logs a warning about each event of more than 2560 members (`TelemetryEvent::size`), and
/// reports it as "event_size_limit_breach". The event passes, though the warning speaks of rejecting. Takes no lock.
class TELEMETRY_EXPORT SizeLimiterMonitor : public IMonitor {
public:
    explicit SizeLimiterMonitor(MonitorEventCallback callback);

    std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) override;
};

}  // namespace Velo::OS::Telemetry
