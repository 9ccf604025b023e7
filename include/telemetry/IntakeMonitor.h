#pragma once

#include <memory>
#include <mutex>

#include "telemetry/IMonitor.h"

namespace Velo::OS::Telemetry {

/// "intake_monitor": reports as "telemetry_event_intake_monitor_audit" that a user's events of a name have entered the
/// pipeline, once while the process lives for those logged as JSON bundles and once for all others. Its own reports it
/// leaves alone.
///
/// What was reported is kept for the whole process, grows with every name and user, and is guarded by a lock of its
/// own. The monitor holds its own lock while it calls the callback, which must not call back into it.
class TELEMETRY_EXPORT IntakeMonitor : public IMonitor {
public:
    static constexpr char kKeyEventName[] = "event_name";
    static constexpr char kKeyIntakeFormat[] = "intake_format";
    static constexpr char kKeyProcessingPipeline[] = "processing_pipeline";
    static constexpr char kKeyLowLatency[] = "low_latency";

    explicit IntakeMonitor(MonitorEventCallback callback);

    std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) override;
    /// Whether the gate `TelemetrySorelconfigs::EnableIntakeMonitor` was on when the process first asked.
    virtual bool isGkEnabled();

private:
    std::mutex mutex_;
};

}  // namespace Velo::OS::Telemetry
