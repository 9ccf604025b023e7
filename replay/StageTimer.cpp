#include "replay/StageTimer.h"

namespace Velo::OS::Telemetry::replay {

StageTimer::StageTimer(const std::vector<Journey::Stage>& stages) {
    times_.reserve(stages.size());
    for (const Journey::Stage& stage : stages) times_.push_back({stage.kind, stage.name, {}, {}});
    current_ = times_.size();
}

void StageTimer::enter(const std::string& stage) {
    const auto now = std::chrono::steady_clock::now();
    size_t next = current_ < times_.size() ? current_ + 1 : 0;
    leaveStage(now);
    while (next < times_.size() && times_[next].name != stage) ++next;  // appliers may be passed over
    current_ = next;
    entered_ = now;
}

void StageTimer::leaveStage(std::chrono::steady_clock::time_point now) {
    if (current_ >= times_.size()) return;
    StageTime& time = times_[current_];
    StageTime::Sum& sum = isFollowed_ ? time.followed : time.plain;
    ++sum.events;
    sum.ns += static_cast<uint64_t>(std::chrono::nanoseconds(now - entered_).count());
    current_ = times_.size();
}

}  // namespace Velo::OS::Telemetry::replay
