#pragma once

#include <binder/PersistableBundle.h>
#include <json/value.h>

namespace Velo::OS::Telemetry::benchmarks {

/// The floor of converting a bundle: the platform's own getters, entry by entry, and an insert for each. Takes the
/// array marker out of the bundle.
Json::Value bundleByGetters(android::os::PersistableBundle& bundle);

}  // namespace Velo::OS::Telemetry::benchmarks
