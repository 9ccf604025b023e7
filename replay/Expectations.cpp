#include "replay/Expectations.h"

#include <algorithm>
#include <utility>

#include "replay/JsonFile.h"
#include "replay/JsonNode.h"

namespace Velo::OS::Telemetry::replay {

namespace {

// Of names that are remembered.
constexpr size_t kMaxNames = 1000, kMaxNameLength = 64;

// That may end in a suggestion, for which all of the names are compared.
constexpr size_t kMaxSuggesting = 10;

}  // namespace

void Expectations::observe(const Observation& event) {
    for (EventExpectation* expectation : concernedBy(event.name)) expectation->observe(event);
}

const std::vector<EventExpectation*>& Expectations::concernedBy(const std::string& name) {
    const auto known = byName_.find(name);
    if (known != byName_.end()) return known->second;
    byLastName_.clear();
    for (EventExpectation& expectation : expectations_) {
        if (expectation.concerns(name)) byLastName_.push_back(&expectation);
    }
    if (byName_.size() < kMaxNames && name.size() <= kMaxNameLength) return byName_[name] = byLastName_;
    return byLastName_;
}

std::vector<std::string> Expectations::failures() const {
    std::vector<std::string_view> names;
    names.reserve(byName_.size());
    for (const auto& [name, concerned] : byName_) names.emplace_back(name);
    std::sort(names.begin(), names.end());  // lest the suggestion hang on the hashes

    std::vector<std::string> failures;
    for (const EventExpectation& expectation : expectations_) {
        if (failures.size() >= kMaxSuggesting) names.clear();
        for (std::string& failure : expectation.failures(names)) failures.push_back(std::move(failure));
    }
    return failures;
}

Expectations readExpectations(InputFile& file) {
    const JsonFile json(file);
    const JsonNode root(json);
    std::vector<EventExpectation> expectations;
    root.object({{"events", [&](const JsonNode& events) {
                      events.members([&](const std::string& pattern, const JsonNode& node) {
                          expectations.emplace_back(pattern, node);
                      });
                  }}});
    if (expectations.empty()) root.fail("events: expected at least one name");
    return Expectations(std::move(expectations));
}

}  // namespace Velo::OS::Telemetry::replay
