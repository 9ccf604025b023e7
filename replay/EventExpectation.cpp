#include "replay/EventExpectation.h"

#include <algorithm>
#include <optional>
#include <variant>

#include "replay/Glob.h"
#include "replay/Suggestion.h"

namespace Velo::OS::Telemetry::replay {

namespace {

// A name of 1 MiB takes as many steps for each byte of it.
constexpr size_t kMaxPatternBytes = 1024;

bool isAny(const Outcome& /*outcome*/, const char* /*name*/) { return true; }

bool isKept(const Outcome& outcome, const char* /*name*/) { return std::holds_alternative<Kept>(outcome); }

bool isDropped(const Outcome& outcome, const char* /*name*/) { return std::holds_alternative<Dropped>(outcome); }

bool isBad(const Outcome& outcome, const char* name) { return !isKept(outcome, name) && !isDropped(outcome, name); }

bool isDroppedFor(const Outcome& outcome, const char* cause) {
    const auto* dropped = std::get_if<Dropped>(&outcome);
    return dropped && (dropped->why["guard"] == cause || dropped->why["reason"] == cause);
}

constexpr EventKind kLogged = {"logged", isAny};
constexpr EventKind kKept = {"kept", isKept};
constexpr EventKind kBad = {"bad", isBad};
constexpr EventKind kDropped = {"dropped", isDropped};
// The guards, and why they drop.
constexpr EventKind kCauses[] = {
    {"telemetry_state_guard", isDroppedFor},
    {"state.disabled", isDroppedFor},
    {"pathway_guard", isDroppedFor},
    {"pathway.generic_atom", isDroppedFor},
    {"pathway.in_verification", isDroppedFor},
    {"account_checkpoint_guard", isDroppedFor},
    {"checkpoint.account", isDroppedFor},
    {"event_filter_guard", isDroppedFor},
    {"filter.no_consent", isDroppedFor},
    {"filter.no_data_use_consent", isDroppedFor},
    {"filter.needs_review", isDroppedFor},
    {"filter.uncategorized", isDroppedFor},
    {"filter.invalid", isDroppedFor},
    {"rate_limiter_guard", isDroppedFor},
    {"rate_limit.exceeded", isDroppedFor},
    {"dynamic_telemetry_guard", isDroppedFor},
    {"dynamic.rule", isDroppedFor},
    {"dynamic.sampling", isDroppedFor},
};

}  // namespace

EventExpectation::EventExpectation(std::string pattern, const JsonNode& node)
    : pattern_(std::move(pattern)), where_(node.where()) {
    if (pattern_.size() > kMaxPatternBytes) {
        node.fail("expected a name of at most " + std::to_string(kMaxPatternBytes) + " bytes");
    }
    node.object({readCount(kLogged),
                 readCount(kKept),
                 readCount(kBad),
                 {"dropped", ifPresent([this](const JsonNode& dropped) { readDropped(dropped); })},
                 {"data", readFields(data_)},
                 {"header", readFields(header_)}});
}

JsonNode::Field EventExpectation::readCount(const EventKind& kind) {
    const auto read = [this, &kind](const JsonNode& node) {
        counts_.emplace_back(&kind, CountExpectation::read(node));
    };
    return {kind.name, ifPresent(read)};
}

/// A count of all, or an object with counts by cause, beside which "min" and "max" are those of all.
void EventExpectation::readDropped(const JsonNode& node) {
    if (!node.isObject()) return readCount(kDropped).use(node);
    std::optional<uint64_t> min, max;
    std::vector<JsonNode::Field> fields = {{"min", into(min)}, {"max", into(max)}};
    for (const EventKind& cause : kCauses) fields.push_back(readCount(cause));
    const size_t before = counts_.size();
    node.object(fields);
    if (counts_.size() > before && !min && !max) return;  // by cause alone
    if (!min && !max) node.fail("expected guards, reasons, min or max");
    counts_.emplace_back(&kDropped, CountExpectation(node, min, max));
}

JsonNode::Use EventExpectation::readFields(std::vector<FieldExpectation>& fields) {
    return ifPresent([&fields](const JsonNode& node) {
        node.members([&](const std::string& name, const JsonNode& field) { fields.emplace_back(name, field); });
    });
}

bool EventExpectation::concerns(std::string_view name) const { return matchesGlob(pattern_, name); }

void EventExpectation::observe(const Observation& event) {
    isMatched_ = true;
    for (auto& [kind, count] : counts_) {
        if (kind->includes(event.outcome, kind->name)) count.count();
    }
    if (event.kept) observeFields(*event.kept, event.place);
}

void EventExpectation::observeFields(TelemetryEvent& kept, const LinePlace& place) {
    if (!data_.empty()) {
        const Json::Value data = kept.getJsonValue();
        for (FieldExpectation& field : data_) field.observe(data, place);
    }
    if (!header_.empty()) {
        Json::Value header;
        if (json_.parse(kept.getJsonBatchHeaderString(), header)) header = Json::Value();
        for (FieldExpectation& field : header_) field.observe(header, place);
    }
}

/// It is satisfied by having none.
bool EventExpectation::expectsNoEvent() const {
    const auto expectsNone = [](const auto& count) { return count.second.expectsNone(); };
    return !counts_.empty() && data_.empty() && header_.empty() &&
           std::all_of(counts_.begin(), counts_.end(), expectsNone);
}

std::vector<std::string> EventExpectation::failures(std::span<const std::string_view> names) const {
    if (!isMatched_ && expectsNoEvent()) return {};
    if (!isMatched_) return {where_ + ": no event has such a name" + didYouMean(pattern_, names)};
    std::vector<std::string> failures;
    const auto append = [&](std::optional<std::string> failure) {
        if (failure) failures.push_back(std::move(*failure));
    };
    for (const auto& [kind, count] : counts_) append(count.failure());
    for (const FieldExpectation& field : data_) append(field.failure());
    for (const FieldExpectation& field : header_) append(field.failure());
    return failures;
}

}  // namespace Velo::OS::Telemetry::replay
