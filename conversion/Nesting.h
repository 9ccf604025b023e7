#pragma once

#include <json/value.h>

namespace Velo::OS::Telemetry {

/// Whether more than `limit` arrays and objects stand inside one another, the outermost included. Looks no deeper.
bool nestsDeeperThan(unsigned limit, const Json::Value& value);

/// Makes it null. Unlike jsoncpp's destructor this does not recurse, so that no depth is too much for the stack.
void dismantle(Json::Value& value);

}  // namespace Velo::OS::Telemetry
