#pragma once

#include <binder/PersistableBundle.h>

namespace Velo::OS::Telemetry {

/// The key, of any type, that marks a bundle as an array: "utl_array_of_bundles". Never destroyed, because events are
/// converted until the process has ended.
const android::String16& arrayMarker();

/// Whether the bundle is marked as an array.
bool hasArrayMarker(const android::os::PersistableBundle& bundle);

}  // namespace Velo::OS::Telemetry
