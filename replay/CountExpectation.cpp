#include "replay/CountExpectation.h"

namespace Velo::OS::Telemetry::replay {

CountExpectation CountExpectation::read(const JsonNode& node) {
    std::optional<uint64_t> min, max;
    if (node.isObject()) {
        node.object({{"min", into(min)}, {"max", into(max)}});
    } else {
        node.read(min);
        max = min;
    }
    return {node, min, max};
}

CountExpectation::CountExpectation(const JsonNode& node, std::optional<uint64_t> min, std::optional<uint64_t> max)
    : where_(node.where()), min_(min.value_or(0)), max_(max.value_or(kNoLimit)) {
    if (!min && !max) node.fail("expected a number, min, max or both");
    if (min_ > max_) node.fail("min is greater than max");
}

std::optional<std::string> CountExpectation::failure() const {
    if (seen_ >= min_ && seen_ <= max_) return std::nullopt;
    return where_ + ": expected " + range() + ", seen " + std::to_string(seen_);
}

std::string CountExpectation::range() const {
    if (min_ == max_) return std::to_string(min_);
    if (max_ == kNoLimit) return "at least " + std::to_string(min_);
    if (min_ == 0) return "at most " + std::to_string(max_);
    return std::to_string(min_) + " to " + std::to_string(max_);
}

}  // namespace Velo::OS::Telemetry::replay
