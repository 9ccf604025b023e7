#pragma once

#include <json/value.h>

#include <string>

namespace Velo::OS::Telemetry::replay {

/// The value on a single line.
std::string toCompactJson(const Json::Value& value);

}  // namespace Velo::OS::Telemetry::replay
