#pragma once

#include <memory>

#include "telemetry/IMonitor.h"

namespace Velo::OS::Telemetry {

/// "size_limiter_monitor": logs a warning about each event whose `size` exceeds 2560, and reports it as
/// "event_size_limit_breach". Takes no lock.
class TELEMETRY_EXPORT SizeLimiterMonitor : public IMonitor {
public:
    explicit SizeLimiterMonitor(MonitorEventCallback callback);

    std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) override;
};

}  // namespace Velo::OS::Telemetry
