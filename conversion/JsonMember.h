#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstring>
#include <string_view>

#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

/// In place of jsoncpp's own, which is destroyed at exit.
inline const Json::Value& nullJson() {
    static const Json::Value& null = immortal<Json::Value>();
    return null;
}

/// The member of that name; null if there is none, also in what is no object, which jsoncpp must not be asked about.
inline const Json::Value& memberOf(const Json::Value& value, const char* name) {
    const Json::Value* member = value.isObject() ? value.find(name, name + std::strlen(name)) : nullptr;
    return member ? *member : nullJson();
}

/// The name of a member of an object, as long as the object has it.
inline std::string_view nameOf(const Json::Value::const_iterator& member) {
    const char* end = nullptr;
    const char* begin = member.memberName(&end);
    return {begin, static_cast<size_t>(end - begin)};
}

/// The text of a string, as long as it stays; empty for what is none.
inline std::string_view textOf(const Json::Value& string) {
    const char* begin = nullptr;
    const char* end = nullptr;
    if (!string.getString(&begin, &end)) return {};
    return {begin, static_cast<size_t>(end - begin)};
}

}  // namespace Velo::OS::Telemetry
