#pragma once

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Names and keys of the monitor events in which dynamic telemetry reports on itself.
class TELEMETRY_EXPORT DynamicTelemetryPerformance {
public:
    static constexpr char kGuardEventName[] = "telemetry_service_dynamic_telemetry_guard_performance";
    static constexpr char kLoggingDuration[] = "logging_duration_ms";
    static constexpr char kConfigId[] = "dynamic_telemetry_config_id";  // of kept events too

    static constexpr char kMonitorEventName[] = "telemetry_service_dynamic_telemetry_monitor";
    static constexpr char kMonitorLoggingDuration[] = "logging_duration_ms";
    static constexpr char kMonitorConfigId[] = "dynamic_telemetry_config_id";
    static constexpr char kProcessedEventName[] = "processed_event_name";

    static constexpr char kConfigFetchEventName[] = "telemetry_service_dynamic_telemetry_config_performance";
    static constexpr char kFetchedConfigId[] = "fetched_dynamic_telemetry_config_id";
    static constexpr char kActiveConfigId[] = "active_dynamic_telemetry_config_id";
    static constexpr char kFetchFinishedMs[] = "fetch_finished_ms";
    static constexpr char kFetchOutcome[] = "fetch_outcome";
};

}  // namespace Velo::OS::Telemetry
