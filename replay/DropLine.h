#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// A line of input as it stands but for one more member, "dropped", and its newline. `earlier` is the member of that
/// name that the line was read with, or null: the new one takes its place.
std::string dropLine(std::string_view line, const Json::Value* earlier, const Json::Value& dropped);

}  // namespace Velo::OS::Telemetry::replay
