#include "replay/FieldExpectation.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "replay/CompactJson.h"
#include "replay/StrictJson.h"
#include "replay/Suggestion.h"
#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr char kNothing[] = "nothing";
constexpr size_t kMaxShownBytes = 120;  // of a value, in a message

bool isOfType(const Json::Value& value, std::string_view type) {
    if (type == "null") return value.isNull();
    if (type == "boolean") return value.isBool();
    if (type == "integer") return isIntegerLiteral(value);
    if (type == "number") return value.isNumeric();
    if (type == "string") return value.isString();
    if (type == "array") return value.isArray();
    return value.isObject();
}

}  // namespace

FieldExpectation::FieldExpectation(std::string name, const JsonNode& node)
    : name_(std::move(name)), where_(node.where()) {
    if (!node.isObject()) node.fail("expected an object with present, type, value or one_of");
    node.object({{"present", ifPresent([this](const JsonNode& member) { readPresent(member); })},
                 {"type", ifPresent([this](const JsonNode& member) { readType(member); })},
                 {"value", ifPresent([this](const JsonNode& member) { readValue(member); })},
                 {"one_of", ifPresent([this](const JsonNode& member) { readOneOf(member); })}});
    if (!holds_) node.fail("expected present, type, value or one_of");
}

void FieldExpectation::expect(const JsonNode& node, const std::string& inWords, Condition condition) {
    if (holds_) node.fail("expected only one of present, type, value and one_of");
    expected_ = shortened(inWords, kMaxShownBytes);
    holds_ = std::move(condition);
}

void FieldExpectation::readPresent(const JsonNode& node) {
    bool present = false;
    node.read(present);
    expect(node, present ? "any value" : kNothing,
           [present](const Json::Value* value) { return present == (value != nullptr); });
}

void FieldExpectation::readType(const JsonNode& node) {
    static constexpr std::string_view kTypes[] = {"null", "boolean", "integer", "number", "string", "array", "object"};
    std::string text;
    node.read(text);
    const auto* type = std::find(std::begin(kTypes), std::end(kTypes), text);
    if (type == std::end(kTypes)) node.fail("expected " + listed(kTypes) + didYouMean(text, kTypes));
    expect(node, "type " + text, [type = *type](const Json::Value* value) { return value && isOfType(*value, type); });
}

void FieldExpectation::readValue(const JsonNode& node) {
    // Compared as text, for jsoncpp tells 5 from 5 where one of them has no sign.
    expect(node, node.text(),
           [text = node.text()](const Json::Value* value) { return value && toCompactJson(*value) == text; });
}

void FieldExpectation::readOneOf(const JsonNode& node) {
    std::vector<std::string> texts;
    node.elements([&](const JsonNode& element) { texts.push_back(element.text()); });
    if (texts.empty()) node.fail("expected at least one value");
    expect(node, "one of " + node.text(), [texts = std::move(texts)](const Json::Value* value) {
        return value && std::find(texts.begin(), texts.end(), toCompactJson(*value)) != texts.end();
    });
}

void FieldExpectation::observe(const Json::Value& members, const LinePlace& place) {
    ++observed_;
    const Json::Value* value = members.find(name_.data(), name_.data() + name_.size());
    if (holds_(value)) return;
    if (++wrong_ == 1)
        firstWrong_ = (value ? shortened(toCompactJson(*value), kMaxShownBytes) : kNothing) + " at " + toText(place);
}

std::optional<std::string> FieldExpectation::failure() const {
    const std::string expected = where_ + ": expected " + expected_;
    if (observed_ == 0) return expected + ", but no event was kept";
    if (wrong_ == 0) return std::nullopt;
    return expected + ", seen " + firstWrong_ + "; wrong in " + std::to_string(wrong_) + " of " +
           std::to_string(observed_) + " kept events";
}

}  // namespace Velo::OS::Telemetry::replay
