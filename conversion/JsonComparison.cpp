#include "conversion/JsonComparison.h"

#include "conversion/JsonMember.h"

namespace Velo::OS::Telemetry {

namespace {

/// Neither is less than the other.
bool isSameReal(double left, double right) { return !(left < right) && !(right < left); }

/// By what jsoncpp holds of an array, which leaves out elements that were never set.
bool areSameElements(const Json::Value& left, const Json::Value& right) {
    auto other = right.begin();
    for (auto element = left.begin(); element != left.end(); ++element, ++other) {
        if (other == right.end() || element.index() != other.index() || !isSameJson(*element, *other)) return false;
    }
    return other == right.end();
}

bool areSameMembers(const Json::Value& left, const Json::Value& right) {
    if (left.size() != right.size()) return false;
    auto other = right.begin();
    for (auto member = left.begin(); member != left.end(); ++member, ++other) {
        if (nameOf(member) != nameOf(other) || !isSameJson(*member, *other)) return false;
    }
    return true;
}

}  // namespace

bool isSameJson(const Json::Value& left, const Json::Value& right) {
    if (left.type() != right.type()) return false;
    switch (left.type()) {
        case Json::nullValue:
            return true;
        case Json::intValue:
            return left.asLargestInt() == right.asLargestInt();
        case Json::uintValue:
            return left.asLargestUInt() == right.asLargestUInt();
        case Json::realValue:
            return isSameReal(left.asDouble(), right.asDouble());
        case Json::stringValue:
            return textOf(left) == textOf(right);
        case Json::booleanValue:
            return left.asBool() == right.asBool();
        case Json::arrayValue:
            return areSameElements(left, right);
        case Json::objectValue:
            return areSameMembers(left, right);
    }
    return false;
}

}  // namespace Velo::OS::Telemetry
