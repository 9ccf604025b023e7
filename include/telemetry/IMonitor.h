#pragma once

#include <memory>
#include <string>

#include "telemetry/Export.h"
#include "telemetry/MonitorEventCallback.h"
#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// Observes an event before the guards see it. A monitor reports; it never drops, changes or replaces the event.
///
/// `monitor` may run on several threads at once and returns the very event it was given, which must not be null. What
/// the callback throws passes through it, and the event is lost.
class TELEMETRY_EXPORT IMonitor {
public:
    /// `name` is the stage name; `callback` receives what the monitor has to report.
    IMonitor(std::string name, MonitorEventCallback callback);
    IMonitor(const IMonitor&) = delete;
    IMonitor& operator=(const IMonitor&) = delete;
    virtual ~IMonitor();

    virtual std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) = 0;

    std::string name_;

protected:
    MonitorEventCallback callback_;
};

}  // namespace Velo::OS::Telemetry
