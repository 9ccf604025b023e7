#pragma once

#include <json/value.h>

#include <map>
#include <optional>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "replay/Device.h"
#include "telemetry/IDynamicTelemetryManager.h"

namespace Velo::OS::Telemetry::replay {

/// Decides by the rules of a device which events are kept. Each rule draws from a generator of its own, so that a run
/// can be repeated and what becomes of one event never hangs on another. For one thread at a time.
class DynamicTelemetryRules : public IDynamicTelemetryManager {
public:
    explicit DynamicTelemetryRules(const Device::DynamicTelemetry& telemetry);

    DynamicTelemetryDecision evaluateEvent(const TelemetryEvent& event) override;
    std::string getActiveConfigId(uint32_t userId) override;
    /// The records that waited when the event evaluated last was created.
    PerformanceLogs takePerformanceLogs() override { return std::exchange(due_.performance, {}); }
    std::vector<ConfigFetchLog> takeConfigFetchLogs() override { return std::exchange(due_.fetches, {}); }

    /// Adds why the last event was not to be logged: "reason", "rule" and, if the event had its chance, "draw".
    void explain(Json::Value& why) const;

private:
    void gatherRecords(int64_t momentMs);

    struct Sampler {
        Device::DynamicTelemetry::Rule rule;
        std::mt19937_64 generator;
        std::optional<double> draw;  // the last one
    };

    const std::map<uint32_t, std::string> configs_;
    std::unordered_map<std::string, Sampler> samplers_;  // by event name
    const Sampler* last_ = nullptr;                      // that decided; null: no rule did
    std::multimap<int64_t, Device::DynamicTelemetry::Records> records_;
    Device::DynamicTelemetry::Records due_;
};

}  // namespace Velo::OS::Telemetry::replay
