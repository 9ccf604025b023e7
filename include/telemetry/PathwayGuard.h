#pragma once

#include <memory>
#include <string>

#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"

namespace Velo::OS::Telemetry {

/// "pathway_guard": drops generic atoms; and of an event that is being verified, whatever was not logged as a JSON
/// bundle. Reports nothing and takes no lock.
class TELEMETRY_EXPORT PathwayGuard : public IGuard {
public:
    /// The manager must not be null.
    PathwayGuard(MonitorEventCallback callback, std::shared_ptr<IHealthCountersManager> healthCounters);

    EventResult handle(std::unique_ptr<TelemetryEvent> event) override;
    /// Asks the settings, which are obtained anew for each call.
    virtual bool isEventInVerification(const std::string& eventName);

private:
    std::shared_ptr<IHealthCountersManager> healthCounters_;
};

}  // namespace Velo::OS::Telemetry
