#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "replay/Journey.h"

namespace Velo::OS::Telemetry::replay {

/// What a stage took. To follow an event costs time of its own, so events on a journey stand apart.
struct StageTime {
    struct Sum {
        uint64_t events = 0;  // that it was done with
        uint64_t ns = 0;
    };

    Journey::Kind kind{};
    std::string name;
    Sum plain, followed;
};

/// Adds up, for each stage of a pipeline, the time from when an event enters it to when it enters the next one or
/// leaves the pipeline. The time of a stage that runs within another is the other's. For one thread.
class StageTimer {
public:
    /// In the order in which events enter them.
    explicit StageTimer(const std::vector<Journey::Stage>& stages);

    void begin(bool isFollowed) {
        isFollowed_ = isFollowed;
        current_ = times_.size();
    }
    void enter(const std::string& stage);
    /// The event leaves the pipeline. Without this, as when a stage throws, its last stage does not count it.
    void end() { leaveStage(std::chrono::steady_clock::now()); }

    /// In that order.
    const std::vector<StageTime>& times() const { return times_; }

private:
    void leaveStage(std::chrono::steady_clock::time_point now);

    std::vector<StageTime> times_;
    size_t current_ = 0;  // as many as there are: none
    bool isFollowed_ = false;
    std::chrono::steady_clock::time_point entered_;
};

}  // namespace Velo::OS::Telemetry::replay
