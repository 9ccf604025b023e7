#pragma once

#include <binder/PersistableBundle.h>
#include <json/value.h>

#include <string>

#include "telemetry/Export.h"
#include "telemetry/NestingLimit.h"

namespace Velo::OS::Telemetry {

/// Parses a NUL-terminated text (not null) with jsoncpp's default, lenient reader. Returns false on any error,
/// nesting beyond the reader's 1,000 levels included; `out` is then unspecified. Never throws.
TELEMETRY_EXPORT bool getJsonFromString(const char* text, Json::Value& out);

/// Stores a JSON value in the bundle under `key` (UTF-8), so that `convertBundleToJson` reads the same shape back.
///
/// Objects become nested bundles; arrays become nested bundles with the array marker and the keys "0", "1", ...; every
/// number becomes a double. A null is not stored, neither at the top (true is returned) nor inside: an array with a
/// null in it is therefore stored with a gap. Strings and keys end at their first NUL. Returns false, and stores
/// nothing, for a value that would nest deeper than `kMaxNesting` with the bundle around it, and for one of a kind that
/// jsoncpp does not have today; children of such a kind are left out.
///
/// What does not come back as it was: an empty object is null, and an object that has a member with the name of the
/// array marker, "utl_array_of_bundles", is taken for an array.
///
/// The platform stores nested bundles as copies, so the time grows with the square of the depth.
TELEMETRY_EXPORT bool convertJsonToBundle(const std::string& key, const Json::Value& value,
                                          android::os::PersistableBundle& bundle);

}  // namespace Velo::OS::Telemetry
