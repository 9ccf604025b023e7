#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "replay/JsonNode.h"
#include "replay/LinePlace.h"

namespace Velo::OS::Telemetry::replay {

/// What a member of the data, or of the batch header, should be in every kept event. Remembers the first that is not as
/// expected, and counts the others.
class FieldExpectation {
public:
    /// The node is an object with one member: "present" (bool), "type" (string), "value" (any value) or "one_of" (an
    /// array of such).
    FieldExpectation(std::string name, const JsonNode& node);

    /// `members` is the data or the header of a kept event: an object, or null.
    void observe(const Json::Value& members, const LinePlace& place);
    /// None if it holds of all events so far. Of no event at all it does not hold.
    std::optional<std::string> failure() const;

private:
    /// Of the member; null if it is absent.
    using Condition = std::function<bool(const Json::Value*)>;

    void expect(const JsonNode& node, const std::string& inWords, Condition condition);
    void readPresent(const JsonNode& node);
    void readType(const JsonNode& node);
    void readValue(const JsonNode& node);
    void readOneOf(const JsonNode& node);

    std::string name_;
    std::string where_;
    std::string expected_;  // in words
    Condition holds_;
    uint64_t observed_ = 0, wrong_ = 0;
    std::string firstWrong_;  // and where
};

}  // namespace Velo::OS::Telemetry::replay
