#pragma once

#include <json/value.h>

namespace Velo::OS::Telemetry {

/// The member of that name; null if there is none, also in what is no object, which jsoncpp must not be asked about.
inline const Json::Value& memberOf(const Json::Value& value, const char* name) {
    return value.isObject() ? value[name] : Json::Value::nullSingleton();
}

}  // namespace Velo::OS::Telemetry
