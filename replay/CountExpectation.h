#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "replay/JsonNode.h"

namespace Velo::OS::Telemetry::replay {

/// How many events of some kind there should be, and how many there have been.
class CountExpectation {
public:
    /// Of a number, or of an object with the members "min" and "max", of which one may be absent.
    static CountExpectation read(const JsonNode& node);

    /// Of a range that was read at the node, whose error it is if that has no limit or none can be in it.
    CountExpectation(const JsonNode& node, std::optional<uint64_t> min, std::optional<uint64_t> max);

    void count() { ++seen_; }
    bool expectsNone() const { return max_ == 0; }
    /// None if it holds so far.
    std::optional<std::string> failure() const;

private:
    static constexpr uint64_t kNoLimit = std::numeric_limits<uint64_t>::max();

    std::string range() const;

    std::string where_;
    uint64_t min_, max_;
    uint64_t seen_ = 0;
};

}  // namespace Velo::OS::Telemetry::replay
