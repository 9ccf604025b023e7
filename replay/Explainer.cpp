#include "replay/Explainer.h"

#include <memory>
#include <utility>

namespace Velo::OS::Telemetry::replay {

namespace {

template <typename T>
bool admits(const std::set<T>& chosen, const T& value) {
    return chosen.empty() || chosen.count(value) > 0;
}

}  // namespace

Journey* Explainer::begin(const LinePlace& place, bool isReport, const TelemetryEvent& event, std::string_view line,
                          const std::vector<Journey::Stage>& stages) {
    journey_.reset();
    if (!isChosen(place, isReport, event.name())) return nullptr;
    // Shows what the event is like. To have the event itself converted to JSON would change what the stages see.
    EventDecoder::Decoded decoded = decoder_.decode(line);
    const auto* twin = std::get_if<std::unique_ptr<TelemetryEventBundle>>(&decoded);
    if (!twin) return nullptr;
    Json::Value data = (*twin)->getJsonValue();
    return &journey_.emplace(Journey::Event{place, isReport, event.name(), event.uid(),
                                            getFormatName(event.getIntakeFormat()), (*twin)->getStringIdentifier()},
                             std::move(data), stages);
}

bool Explainer::isChosen(const LinePlace& place, bool isReport, const std::string& name) const {
    if (choice_.first && explained_ >= *choice_.first) return false;
    if (isReport && choice_.names.empty()) return false;
    return concerns(place) && admits(choice_.names, name);
}

bool Explainer::concerns(const LinePlace& place) const { return admits(choice_.lines, place.line); }

void Explainer::end(const Outcome& outcome) {
    if (!journey_) return;
    ++explained_;
    output_.write(format_ == Format::Json ? toJsonLine(*journey_, outcome)
                                          : toText(*journey_, outcome, format_ == Format::ColouredText));
}

bool Explainer::isDone(uint64_t line, bool isOfLastFile) const {
    if (choice_.first && explained_ >= *choice_.first) return true;
    return isOfLastFile && !choice_.lines.empty() && line >= *choice_.lines.rbegin();
}

}  // namespace Velo::OS::Telemetry::replay
