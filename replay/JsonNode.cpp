#include "replay/JsonNode.h"

#include "replay/FileError.h"
#include "replay/StrictJson.h"

namespace Velo::OS::Telemetry::replay {

void JsonNode::fail(const std::string& reason) const {
    throw FileError(file_ + ": " + (path_.empty() ? "" : path_ + ": ") + reason);
}

void JsonNode::read(bool& out) const {
    if (!value_.isBool()) fail("expected true or false");
    out = value_.asBool();
}

void JsonNode::read(std::string& out) const {
    if (!value_.isString()) fail("expected a string");
    out = value_.asString();
}

void JsonNode::read(double& out) const {
    if (!value_.isNumeric()) fail("expected a number");
    out = value_.asDouble();
}

template <typename Integer>
void JsonNode::readInteger(Integer& out) const {
    if (!isIntegerLiteral(value_) || !value_.is<Integer>()) fail("expected " + nameOf<Integer>());
    out = value_.as<Integer>();
}

template void JsonNode::readInteger(int32_t&) const;
template void JsonNode::readInteger(int64_t&) const;
template void JsonNode::readInteger(uint32_t&) const;
template void JsonNode::readInteger(uint64_t&) const;

void JsonNode::object(std::initializer_list<Field> fields) const {
    members([&](const std::string& name, const JsonNode& member) {
        for (const Field& field : fields) {
            if (name == field.name) return field.use(member);
        }
        member.fail("unknown member");
    });
}

void JsonNode::members(const std::function<void(const std::string&, const JsonNode&)>& use) const {
    if (!value_.isObject()) fail("expected an object");
    for (auto member = value_.begin(); member != value_.end(); ++member) {
        const std::string name = member.name();
        use(name, JsonNode(*member, file_, path_.empty() ? name : path_ + "." + name));
    }
}

void JsonNode::elements(const Use& use) const {
    if (!value_.isArray()) fail("expected an array");
    for (Json::ArrayIndex i = 0; i < value_.size(); ++i) {
        use(JsonNode(value_[i], file_, path_ + "[" + std::to_string(i) + "]"));
    }
}

}  // namespace Velo::OS::Telemetry::replay
