#pragma once

#include <memory>

#include "telemetry/IGuard.h"
#include "telemetry/ITelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

/// "telemetry_state_guard": drops every event while telemetry is disabled in the settings. Reports and counts nothing
/// and takes no lock.
class TELEMETRY_EXPORT TelemetryStateGuard : public IGuard {
public:
    explicit TelemetryStateGuard(MonitorEventCallback callback);

    EventResult handle(std::unique_ptr<TelemetryEvent> event) override;
    /// Asked for each event. A derived class may answer with settings of its own.
    virtual std::shared_ptr<ITelemetrySettingsManager> getSettings() const;
};

}  // namespace Velo::OS::Telemetry
