#pragma once

#include <binder/PersistableBundle.h>

namespace Velo::OS::Telemetry {

/// The key, of any type, that marks a bundle as an array.
inline constexpr char kArrayMarker[] = "utl_array_of_bundles";

/// Whether the bundle is marked as an array.
bool hasArrayMarker(const android::os::PersistableBundle& bundle);

}  // namespace Velo::OS::Telemetry
