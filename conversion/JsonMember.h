#pragma once

#include <json/value.h>

#include <cstring>

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

}  // namespace Velo::OS::Telemetry
