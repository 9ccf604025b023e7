#pragma once

#include <json/value.h>

#include <string>

namespace Velo::OS::Telemetry {

/// The value as single-line JSON, written by jsoncpp with its defaults otherwise.
std::string toCompactJson(const Json::Value& value);

}  // namespace Velo::OS::Telemetry
