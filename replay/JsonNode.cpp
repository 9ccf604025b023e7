#include "replay/JsonNode.h"

#include <cstring>
#include <string_view>

#include "replay/CompactJson.h"
#include "replay/FileError.h"
#include "replay/StrictJson.h"
#include "replay/Suggestion.h"
#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// The second is how a file tells an editor which JSON Schema it is of.
constexpr char kComment[] = "//", kSchema[] = "$schema";

/// What may be meant instead, or what there is if that is not too much.
std::string suggestion(const std::string& name, const std::vector<JsonNode::Field>& fields) {
    constexpr size_t kMaxNames = 8;
    std::vector<std::string_view> known;
    known.reserve(fields.size());
    for (const JsonNode::Field& field : fields) known.emplace_back(field.name);
    std::string nearest = didYouMean(name, known);
    if (!nearest.empty() || known.empty() || known.size() > kMaxNames) return nearest;
    return "; expected " + listed(known);
}

bool hasField(const std::vector<JsonNode::Field>& fields, const std::string& name) {
    for (const JsonNode::Field& field : fields) {
        if (name == field.name) return true;
    }
    return false;
}

}  // namespace

void JsonNode::fail(const std::string& reason) const { throw FileError(where() + ": " + reason); }

std::string JsonNode::where() const {
    const std::string inFile = path();
    return place() + (inFile.empty() ? "" : ": " + inFile);
}

/// Joined only when it is asked for: a long name may stand around many values.
std::string JsonNode::path() const {
    constexpr size_t kMaxNameBytes = 128;
    if (!parent_) return {};
    const std::string parent = parent_->path();
    if (const auto* index = std::get_if<Json::ArrayIndex>(&step_)) return parent + "[" + std::to_string(*index) + "]";
    return (parent.empty() ? "" : parent + ".") + shortened(std::get<std::string_view>(step_), kMaxNameBytes);
}

std::string JsonNode::place() const {
    return value_ ? context_.file->name() + ":" + std::to_string(context_.file->lineOf(*value_)) : "default";
}

std::string JsonNode::text() const { return toCompactJson(value_ ? *value_ : Json::Value()); }

void JsonNode::list(const Json::Value& value) const {
    if (context_.list) context_.list->push_back({path(), toCompactJson(value), place()});
}

void JsonNode::read(bool& out) const {
    if (value_) {
        if (!value_->isBool()) fail("expected true or false");
        out = value_->asBool();
    }
    list(out);
}

void JsonNode::read(std::string& out) const {
    if (value_) {
        if (!value_->isString()) fail("expected a string");
        out = value_->asString();
    }
    list(out);
}

void JsonNode::read(double& out) const {
    if (value_) {
        if (!value_->isNumeric()) fail("expected a number");
        out = value_->asDouble();
    }
    list(out);
}

void JsonNode::read(Json::Value& out) const {
    if (value_) out = *value_;
    list(out);
}

template <typename Integer>
void JsonNode::readInteger(Integer& out) const {
    if (value_) {
        if (!isIntegerLiteral(*value_) || !value_->is<Integer>()) fail("expected " + nameOf<Integer>());
        out = value_->as<Integer>();
    }
    list(out);
}

template void JsonNode::readInteger(int32_t&) const;
template void JsonNode::readInteger(int64_t&) const;
template void JsonNode::readInteger(uint32_t&) const;
template void JsonNode::readInteger(uint64_t&) const;

void JsonNode::readIfPresent(const Use& use) const {
    if (!value_) return list({});
    use(*this);
}

void JsonNode::requireObject() const {
    if (value_ && !value_->isObject()) fail("expected an object");
}

void JsonNode::checkMembers(const std::vector<Field>& fields) const {
    for (auto it = value_->begin(); it != value_->end(); ++it) {
        const std::string name = it.name();
        if (hasField(fields, name)) continue;
        const bool isAside = name == kComment || (name == kSchema && !parent_);
        if (!isAside) JsonNode(*this, name, &*it).fail("unknown member" + suggestion(name, fields));
        if (!it->isString()) JsonNode(*this, name, &*it).fail("expected a string");
    }
}

void JsonNode::object(const std::vector<Field>& fields) const {
    requireObject();
    if (value_) checkMembers(fields);
    for (const Field& field : fields) {
        const char* end = field.name + std::strlen(field.name);
        field.use(JsonNode(*this, field.name, value_ ? value_->find(field.name, end) : nullptr));
    }
}

void JsonNode::members(const std::function<void(const std::string&, const JsonNode&)>& use) const {
    requireObject();
    if (!value_ || value_->empty()) return list(Json::objectValue);
    for (auto it = value_->begin(); it != value_->end(); ++it) {
        const std::string name = it.name();
        use(name, JsonNode(*this, name, &*it));
    }
}

void JsonNode::elements(const Use& use) const {
    if (value_ && !value_->isArray()) fail("expected an array");
    if (!value_ || value_->empty()) return list(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < value_->size(); ++i) {
        use(JsonNode(*this, i, &(*value_)[i]));
    }
}

}  // namespace Velo::OS::Telemetry::replay
