#pragma once

#include <binder/PersistableBundle.h>
#include <json/value.h>

#include <optional>
#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// Puts the object's members into the bundle, each by its nature: a bool as a boolean; an integer as an int if it fits
/// 32 bits, else as a long; a number written with a fraction or an exponent as a double; a string as a string; a member
/// that is a non-empty array of strings as a string vector; any other array as a nested bundle with the array marker;
/// an object as a nested bundle.
///
/// `source` is the text that the object was parsed from. Returns the path of the first value or key that no bundle can
/// hold, from `path` on, and why: "bundle.a.b[2]: null cannot be held by a bundle".
[[nodiscard]] std::optional<std::string> bundleFromJson(const Json::Value& object, std::string_view source,
                                                        std::string_view path, android::os::PersistableBundle& bundle);

}  // namespace Velo::OS::Telemetry::replay
