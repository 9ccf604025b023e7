#pragma once

#include <binder/PersistableBundle.h>
#include <json/value.h>

#include <string>

#include "telemetry/Export.h"
#include "telemetry/NestingLimit.h"

namespace Velo::OS::Telemetry {

/// Converts a bundle, nested bundles included, to JSON.
///
/// A bundle that holds the key "utl_array_of_bundles" (of any type) stands for an array whose elements lie under the
/// keys "0", "1", ...; any other bundle becomes an object. The key is removed from `bundle`, whatever the outcome.
///
/// `json` must be null, or an object when the bundle is no array. Members that it already has win over scalars and
/// string vectors of the same key; nested bundles are merged into them. An empty bundle leaves a null `json` null.
/// Vectors of other types are left out; so are string vectors that are elements of an array.
///
/// Returns false, and leaves in `json` what was written until then, when `json` is of the wrong kind, an array has a
/// gap, a key that is no index or a key of two types, a double is not finite, or more than `kMaxNesting` bundles stand
/// inside one another, where a string vector counts as one. Never throws. Strings and keys end at their first NUL.
///
/// The platform hands out nested bundles as copies, so the time grows with the square of the depth.
TELEMETRY_EXPORT bool convertBundleToJson(android::os::PersistableBundle& bundle, Json::Value& json);

/// The scalar (bool, int, long, double or string, looked for in this order) that the bundle's top level holds under
/// `key` (UTF-8), else null. Doubles that are not finite are returned as they are.
TELEMETRY_EXPORT Json::Value getScalarValueFromBundle(const android::os::PersistableBundle& bundle,
                                                      const std::string& key);

/// Whether the text is one or more ASCII digits and nothing else.
TELEMETRY_EXPORT bool isStrNumber(const std::string& text);

}  // namespace Velo::OS::Telemetry
