#pragma once

#include <json/value.h>

#include <cstdint>
#include <optional>

namespace Velo::OS::Telemetry {

/// The number that the value holds, its fraction truncated; none if it is no number or one that no signed 64-bit
/// integer holds. jsoncpp's own `asInt64` throws for some of these and differs between processors for 2^63.
std::optional<int64_t> toInt64(const Json::Value& value);

}  // namespace Velo::OS::Telemetry
