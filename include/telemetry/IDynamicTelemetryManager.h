#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "telemetry/Export.h"
#include "telemetry/IDynamicTelemetryPerformance.h"
#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

// The layouts of these values are ABI.

/// What is to become of an event.
struct DynamicTelemetryDecision {
    bool shouldLog = true;
    float sampleRate = 1;  // above 0, at most 1: 1 / the number of events for which this one stands
};

/// Reported in this order, those of the guard first.
struct PerformanceLogs {
    std::vector<IDynamicTelemetryPerformance::GuardPerformanceLog> guardLogs;
    std::vector<IDynamicTelemetryPerformance::MonitorLog> monitorLogs;
};

/// How a fetch ended. Reported as text: "noChange", "persistSuccess" and so on; empty for a value that is none of
/// these.
enum class FetchOutcome : int32_t {
    NoChange = 0,
    PersistSuccess = 1,
    PersistError = 2,
    ParseError = 3,
    EndpointError = 4,
    UserTokenEmpty = 5,
};

/// One fetch of a configuration.
struct ConfigFetchLog {
    std::string activeConfigId;  // in force after the fetch
    std::optional<std::string> fetchedConfigId;
    int64_t fetchFinished = 0;  // when, in microseconds
    FetchOutcome outcome = FetchOutcome::NoChange;
};

/// Decides by a configuration that is fetched per user which events are kept. Injected by the service; called with the
/// guard's lock held.
///
/// The service was compiled against these slots; the two destructors are entries 1 and 2, and entries that this library
/// does not call are reserved in their places.
class TELEMETRY_EXPORT IDynamicTelemetryManager {
public:
    virtual ~IDynamicTelemetryManager() = default;
    virtual void reserved3() {}
    /// The event is lent for the call.
    virtual DynamicTelemetryDecision evaluateEvent(const TelemetryEvent& event) = 0;
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    /// The id of the configuration in force for the Android user; empty if there is none.
    virtual std::string getActiveConfigId(uint32_t userId) = 0;
    virtual void reserved10() {}
    virtual void reserved11() {}
    /// What was gathered since the last call: each record is handed over once. Other threads may be gathering.
    virtual PerformanceLogs takePerformanceLogs() = 0;
    virtual std::vector<ConfigFetchLog> takeConfigFetchLogs() = 0;
};

}  // namespace Velo::OS::Telemetry
