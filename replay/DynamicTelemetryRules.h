#pragma once

#include <json/value.h>

#include <optional>
#include <random>
#include <string>

#include "replay/Device.h"
#include "telemetry/IDynamicTelemetryManager.h"

namespace Velo::OS::Telemetry::replay {

/// Decides by the rules of a device which events are kept. Draws from one seeded generator, whose every bit the
/// standard fixes, so that a run can be repeated. Has no records of its own to report. For one thread.
class DynamicTelemetryRules : public IDynamicTelemetryManager {
public:
    explicit DynamicTelemetryRules(const Device::DynamicTelemetry& telemetry)
        : telemetry_(telemetry), generator_(telemetry.seed) {}

    DynamicTelemetryDecision evaluateEvent(const TelemetryEvent& event) override;
    std::string getActiveConfigId(uint32_t userId) override;
    PerformanceLogs takePerformanceLogs() override { return {}; }
    std::vector<ConfigFetchLog> takeConfigFetchLogs() override { return {}; }

    /// Adds why the last event was not to be logged: "reason", "rule" and, if the event had its chance, "draw".
    void explain(Json::Value& why) const;

private:
    const Device::DynamicTelemetry telemetry_;
    std::mt19937_64 generator_;
    Device::DynamicTelemetry::Rule rule_;  // for the last event
    std::optional<double> draw_;
};

}  // namespace Velo::OS::Telemetry::replay
