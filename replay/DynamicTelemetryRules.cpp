#include "replay/DynamicTelemetryRules.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// The standard fixes every bit of what the generator draws, and of how it is seeded.
std::mt19937_64 makeGenerator(uint64_t seed, const std::string& eventName) {
    std::vector<uint32_t> words = {static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32)};
    for (const char byte : eventName) words.push_back(static_cast<unsigned char>(byte));
    std::seed_seq sequence(words.begin(), words.end());
    return std::mt19937_64(sequence);
}

}  // namespace

DynamicTelemetryRules::DynamicTelemetryRules(const Device::DynamicTelemetry& telemetry)
    : configs_(telemetry.configs), records_(telemetry.records) {
    for (const auto& [name, rule] : telemetry.events) {
        samplers_[name] = {rule, makeGenerator(telemetry.seed, name), std::nullopt};
    }
}

void DynamicTelemetryRules::gatherRecords(int64_t momentMs) {
    const auto end = records_.upper_bound(momentMs);
    for (auto records = records_.begin(); records != end; records = records_.erase(records)) {
        const auto append = [](const auto& more, auto& all) { all.insert(all.end(), more.begin(), more.end()); };
        append(records->second.performance.guardLogs, due_.performance.guardLogs);
        append(records->second.performance.monitorLogs, due_.performance.monitorLogs);
        append(records->second.fetches, due_.fetches);
    }
}

DynamicTelemetryDecision DynamicTelemetryRules::evaluateEvent(const TelemetryEvent& event) {
    gatherRecords(event.clientCreatedTime());
    const auto found = samplers_.find(event.name());
    last_ = found == samplers_.end() ? nullptr : &found->second;
    if (!last_) return {};
    Sampler& sampler = found->second;
    const double rate = sampler.rule.sampleRate;
    // The upper 53 bits make a number from 0 to 1. The standard's own distribution is not the same everywhere.
    if (sampler.rule.keep && rate < 1) sampler.draw = static_cast<double>(sampler.generator() >> 11) * 0x1p-53;
    const bool isDrawn = !sampler.draw || *sampler.draw < rate;
    return {sampler.rule.keep && isDrawn, static_cast<float>(rate)};
}

std::string DynamicTelemetryRules::getActiveConfigId(uint32_t userId) {
    const auto found = configs_.find(userId);
    return found == configs_.end() ? std::string() : found->second;
}

void DynamicTelemetryRules::explain(Json::Value& why) const {
    if (!last_) return;
    why["reason"] = last_->rule.keep ? "dynamic.sampling" : "dynamic.rule";
    why["rule"]["keep"] = last_->rule.keep;
    why["rule"]["sample_rate"] = last_->rule.sampleRate;
    if (last_->draw) why["draw"] = *last_->draw;
}

}  // namespace Velo::OS::Telemetry::replay
