#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// The records in which dynamic telemetry keeps account of its own cost. Their layouts are ABI.
class TELEMETRY_EXPORT IDynamicTelemetryPerformance {
public:
    /// Reported as "telemetry_service_dynamic_telemetry_guard_performance".
    struct GuardPerformanceLog {
        std::unordered_map<std::string, int64_t> metrics;  // by the key under which each is reported
        std::string configId;
        int64_t loggingDurationMs = 0;
    };

    /// Reported as "telemetry_service_dynamic_telemetry_monitor".
    struct MonitorLog {
        std::string configId;
        std::string processedEventName;
        std::unordered_map<std::string, int64_t> metrics;  // by the key under which each is reported
        int64_t loggingDurationMs = 0;
    };
};

}  // namespace Velo::OS::Telemetry
