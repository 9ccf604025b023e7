#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "replay/Journey.h"
#include "replay/StageTimer.h"
#include "telemetry/IEventTracingManager.h"
#include "telemetry/IHealthCountersManager.h"

namespace Velo::OS::Telemetry::replay {

/// Adds up the counters of a pipeline, and knows how far the event in hand has come, and on what journey. For one
/// thread.
class PipelineWatch : public IEventTracingManager, public IHealthCountersManager {
public:
    /// The event in hand and the stage that it entered last.
    struct Sight {
        std::string_view stage;  // valid as long as the stage itself
        uint32_t uid = 0;
        std::optional<std::string> counter;  // with which a stage has counted the event
        std::string name;                    // of the event so counted, and its format
        IntakeFormat format{};
    };

    /// From now on takes the time of these stages.
    void timeStages(const std::vector<Journey::Stage>& stages) { timer_.emplace(stages); }
    /// Empty if it was not asked to take it.
    std::vector<StageTime> stageTimes() const { return timer_ ? timer_->times() : std::vector<StageTime>(); }

    /// A new event is in hand. Its journey, if it is to have one, is lent.
    void begin(Journey* journey) {
        sight_ = {};
        journey_ = journey;
        if (timer_) timer_->begin(journey != nullptr);
    }
    /// The event has left the pipeline; a stage that throws keeps it.
    void end() {
        if (timer_) timer_->end();
    }
    const Sight& sight() const { return sight_; }
    Journey* journey() const { return journey_; }
    std::map<std::string, uint64_t> counters() const { return {counters_.begin(), counters_.end()}; }

    void traceEventStage(const std::string& /*eventIdentifier*/, uint32_t uid, const std::string& stageName) override {
        sight_.uid = uid;
        sight_.stage = stageName;
        if (journey_) journey_->enter(stageName);
        if (timer_) timer_->enter(stageName);
    }
    void incrementCounter(const std::string& counterName, int32_t amount) override {
        counters_[counterName] += static_cast<uint64_t>(amount);
    }
    void incrementEventCounter(const std::string& counterName, const TelemetryEvent& event, int32_t amount) override {
        incrementCounter(counterName, amount);
        sight_.counter = counterName;
        sight_.name = event.name();
        sight_.format = event.getIntakeFormat();
    }

private:
    Sight sight_;
    Journey* journey_ = nullptr;
    std::optional<StageTimer> timer_;
    std::unordered_map<std::string, uint64_t> counters_;
};

}  // namespace Velo::OS::Telemetry::replay
