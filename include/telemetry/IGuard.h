#pragma once

#include <memory>
#include <string>

#include "telemetry/EventResult.h"
#include "telemetry/Export.h"
#include "telemetry/MonitorEventCallback.h"

namespace Velo::OS::Telemetry {

/// Decides whether an event may be kept.
///
/// `handle` may run on several threads at once. To pass, it returns the very event it was given; to drop, an error, and
/// the event is destroyed. Callers of the pipeline see every rejection as EINVAL in the generic category.
class TELEMETRY_EXPORT IGuard {
public:
    /// `name` is the stage name; `callback` receives what the guard has to report.
    IGuard(std::string name, MonitorEventCallback callback);
    IGuard(const IGuard&) = delete;
    IGuard& operator=(const IGuard&) = delete;
    virtual ~IGuard();

    virtual EventResult handle(std::unique_ptr<TelemetryEvent> event) = 0;

    std::string name_;

protected:
    MonitorEventCallback callback_;
};

}  // namespace Velo::OS::Telemetry
