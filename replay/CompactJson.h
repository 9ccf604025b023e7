#pragma once

#include <json/value.h>

#include <string>

namespace Velo::OS::Telemetry::replay {

/// The value, of texts that are UTF-8, on a single line and as it may be shown on a terminal. What `escaped` would
/// change stands in texts only, and is written there as JSON has it too, \u009b.
std::string toCompactJson(const Json::Value& value);

}  // namespace Velo::OS::Telemetry::replay
