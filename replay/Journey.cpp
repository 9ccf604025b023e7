#include "replay/Journey.h"

#include <algorithm>
#include <utility>

#include "replay/CompactJson.h"

namespace Velo::OS::Telemetry::replay {

Journey::Journey(Event event, Json::Value data, std::vector<Stage> stages)
    : event_(std::move(event)),
      data_(std::move(data)),
      parts_{data_, Json::objectValue, Json::objectValue},
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
    Stage inner{outer.kind, stage, outer.within.empty() ? outer.name : outer.within, true, {}};
    ++current_;
    stages_.insert(stages_.begin() + static_cast<std::ptrdiff_t>(current_), std::move(inner));
}

void Journey::report(const MonitorReport& report) { stages_[current_].steps.emplace_back(report); }

void Journey::set(Part part, const std::string& field, Json::Value value) {
    Json::Value& members = parts_[static_cast<size_t>(part)];
    Change change{part, field, std::nullopt, std::move(value)};
    if (const Json::Value* before = members.find(field.data(), field.data() + field.size())) {
        // As they will be written: to jsoncpp a number is not equal to one of another type.
        if (toCompactJson(*before) == toCompactJson(change.after)) return;
        change.before = *before;
    }
    members[field] = change.after;
    stages_[current_].steps.emplace_back(std::move(change));
}

const char* nameOf(Journey::Kind kind) {
    static constexpr const char* kNames[] = {"monitor", "guard", "applier"};
    return kNames[static_cast<int>(kind)];
}

}  // namespace Velo::OS::Telemetry::replay
