#pragma once

#include <json/value.h>

#include <string>

namespace Velo::OS::Telemetry {

/// The value as single-line JSON, byte for byte what jsoncpp writes with its defaults and no indentation.
/// Recurses, so the value must not nest much deeper than `kMaxNesting`.
std::string toCompactJson(const Json::Value& value);

/// Appends the text as a JSON string, as jsoncpp would write it.
void appendQuoted(std::string& json, const std::string& text);

}  // namespace Velo::OS::Telemetry
