#include "replay/Explainer.h"

#include <utility>

#include "replay/JourneyText.h"
#include "replay/Suggestion.h"

namespace Velo::OS::Telemetry::replay {

namespace {

template <typename T>
bool admits(const std::set<T>& chosen, const T& value) {
    return chosen.empty() || chosen.count(value) > 0;
}

}  // namespace

std::unique_ptr<Journey> Explainer::follow(const LinePlace& place, bool isReport, const TelemetryEvent& event,
                                           std::string_view line, const std::vector<Journey::Stage>& stages) {
    if (!choice_.names.empty()) rememberName(event.name());
    if (!isChosen(place, isReport, event.name())) return nullptr;
    std::unique_ptr<Journey> journey = start_.begin(place, isReport, event, line, stages);
    if (journey) ++followed_;
    return journey;
}

bool Explainer::isChosen(const LinePlace& place, bool isReport, const std::string& name) const {
    if (choice_.first && followed_ >= *choice_.first) return false;
    if (isReport && choice_.names.empty()) return false;
    return concerns(place) && admits(choice_.names, name);
}

void Explainer::explain(const Observation& observation) {
    if (!observation.journey) return;
    ++explained_;
    const Journey& journey = *observation.journey;
    output_.write(format_ == Format::Json ? toJsonLine(journey, observation.outcome)
                                          : toText(journey, observation.outcome, format_ == Format::ColouredText));
}

void Explainer::rememberName(const std::string& name) {
    constexpr size_t kMaxNames = 1000, kMaxNameLength = 64;
    const bool isWanted = choice_.names.count(name) > 0;
    if (isWanted || (seenNames_.size() < kMaxNames && name.size() <= kMaxNameLength)) seenNames_.insert(name);
}

std::string Explainer::missingNames() const {
    std::string missing;
    const std::vector<std::string_view> seen(seenNames_.begin(), seenNames_.end());
    for (const std::string& name : choice_.names) {
        if (seenNames_.count(name) == 0) missing += "; no " + name + didYouMean(name, seen);
    }
    return missing;
}

bool Explainer::concerns(const LinePlace& place) const { return admits(choice_.lines, place.line); }

bool Explainer::isDone(const LinePlace& place, bool isInLastFile) const {
    if (choice_.first && explained_ >= *choice_.first) return true;
    return isInLastFile && !choice_.lines.empty() && place.line >= *choice_.lines.rbegin();
}

}  // namespace Velo::OS::Telemetry::replay
