#include "replay/DynamicTelemetryRules.h"

namespace Velo::OS::Telemetry::replay {

DynamicTelemetryDecision DynamicTelemetryRules::evaluateEvent(const TelemetryEvent& event) {
    const auto found = telemetry_.events.find(event.name());
    rule_ = found == telemetry_.events.end() ? Device::DynamicTelemetry::Rule() : found->second;
    draw_.reset();
    // The upper 53 bits make a number from 0 to 1. The standard's own distribution is not the same everywhere.
    if (rule_.keep && rule_.sampleRate < 1) draw_ = static_cast<double>(generator_() >> 11) * 0x1p-53;
    const bool isDrawn = !draw_ || *draw_ < rule_.sampleRate;
    return {rule_.keep && isDrawn, static_cast<float>(rule_.sampleRate)};
}

std::string DynamicTelemetryRules::getActiveConfigId(uint32_t userId) {
    const auto found = telemetry_.configs.find(userId);
    return found == telemetry_.configs.end() ? std::string() : found->second;
}

void DynamicTelemetryRules::explain(Json::Value& why) const {
    why["reason"] = rule_.keep ? "dynamic.sampling" : "dynamic.rule";
    why["rule"]["keep"] = rule_.keep;
    why["rule"]["sample_rate"] = rule_.sampleRate;
    if (draw_) why["draw"] = *draw_;
}

}  // namespace Velo::OS::Telemetry::replay
