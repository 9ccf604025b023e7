#pragma once

#include <memory>
#include <mutex>

#include "telemetry/IMonitor.h"

namespace Velo::OS::Telemetry {

/// "intake_monitor": reports the first event of each name and uid as "telemetry_event_intake_monitor_audit", and again
/// the first that was logged in the other kind of format, a JSON bundle or not. Its own reports it leaves alone,
/// and everything while its gate is closed.
///
/// What was reported is kept for the whole process, shared by all monitors, and grows with every name and uid. Two
/// monitors that see the same at the same moment may both report it. A monitor holds its own lock while it calls the
/// callback, which must not call back into it.
class TELEMETRY_EXPORT IntakeMonitor : public IMonitor {
public:
    static constexpr char kKeyEventName[] = "event_name";
    static constexpr char kKeyIntakeFormat[] = "intake_format";
    static constexpr char kKeyProcessingPipeline[] = "processing_pipeline";
    static constexpr char kKeyLowLatency[] = "low_latency";

    explicit IntakeMonitor(MonitorEventCallback callback);

    std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) override;
    /// Whether the gate `TelemetrySorelconfigs::EnableIntakeMonitor` was on when the first of all monitors asked.
    virtual bool isGkEnabled();

private:
    std::mutex mutex_;
};

}  // namespace Velo::OS::Telemetry
