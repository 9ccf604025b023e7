#pragma once

#include "telemetry/IStorageCache.h"

namespace Velo::OS::Telemetry {

/// The base of the service's own storage cache.
class TELEMETRY_EXPORT StorageCache : public IStorageCache {};

}  // namespace Velo::OS::Telemetry
