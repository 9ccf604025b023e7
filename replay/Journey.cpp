#include "replay/Journey.h"

#include <algorithm>
#include <utility>

namespace Velo::OS::Telemetry::replay {

Journey::Journey(Event event, Json::Value data, std::vector<Stage> stages)
    : event_(std::move(event)),
      parts_{std::move(data), Json::objectValue, Json::objectValue},
      stages_(std::move(stages)) {
    parts_[static_cast<size_t>(Part::Event)]["uid"] = event_.uid;
}

void Journey::enter(const std::string& stage) {
    const auto entered =
        std::find_if(stages_.begin(), stages_.end(), [&](const Stage& other) { return other.name == stage; });
    entered->entered = true;
    current_ = static_cast<size_t>(entered - stages_.begin());
}

void Journey::enterWithin(const std::string& stage) {
    const Stage& outer = stages_[current_];
    Stage inner{outer.kind, stage, outer.within.empty() ? outer.name : outer.within, true, {}, {}};
    ++current_;
    stages_.insert(stages_.begin() + static_cast<std::ptrdiff_t>(current_), std::move(inner));
}

void Journey::report(const MonitorReport& report) { stages_[current_].reports.push_back(report); }

void Journey::set(Part part, const std::string& field, Json::Value value) {
    Json::Value& members = parts_[static_cast<size_t>(part)];
    Change change{part, field, std::nullopt, std::move(value)};
    if (const Json::Value* before = members.find(field.data(), field.data() + field.size())) {
        if (*before == change.after) return;
        change.before = *before;
    }
    members[field] = change.after;
    stages_[current_].changes.push_back(std::move(change));
}

}  // namespace Velo::OS::Telemetry::replay
