#pragma once

#include <json/value.h>

namespace Velo::OS::Telemetry {

/// Whether jsoncpp's `compare` gives 0, in linear time: that one asks in both directions at every level, which doubles
/// its work with each. Comments take no part, values of different types differ (1, 1U and 1.0 too), and a NaN is like
/// every real. Recurses, so the values must not nest much deeper than `kMaxNesting`.
bool isSameJson(const Json::Value& left, const Json::Value& right);

}  // namespace Velo::OS::Telemetry
