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
    if (!isChosen(place, isReport, event.name())) {
        if (!choice_.names.empty()) rememberName(event.name());
        return nullptr;
    }
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
    if (otherNames_.size() < kMaxNames && name.size() <= kMaxNameLength) otherNames_.insert(name);
}

std::string Explainer::whyNone() const {
    std::string why = "none of the events was chosen";
    const std::vector<std::string_view> others(otherNames_.begin(), otherNames_.end());
    for (const std::string& name : choice_.names) {
        if (otherNames_.count(name) == 0) why += "; no " + name + didYouMean(name, others);
    }
    return why;
}

bool Explainer::concerns(const LinePlace& place) const { return admits(choice_.lines, place.line); }

bool Explainer::isDone(const LinePlace& place, bool isInLastFile) const {
    if (choice_.first && explained_ >= *choice_.first) return true;
    return isInLastFile && !choice_.lines.empty() && place.line >= *choice_.lines.rbegin();
}

}  // namespace Velo::OS::Telemetry::replay
