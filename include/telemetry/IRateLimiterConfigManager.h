#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// How many events of one identifier are let through. A fresh one leaves the guard's own limit as it is. The layout is
/// ABI.
struct RateLimitConfig {
    int64_t refillCount = 9000;  // tokens added per window; negative: no limit; 0: windows never end
    int64_t maxEvents = 9000;    // tokens that the bucket holds; negative: no limit; 0: nothing passes
    int64_t windowSeconds = 60;  // 0 or less: each event begins a window
};

/// Knows the rate limits. Injected by the service; called with the guard's lock held.
///
/// The service was compiled against these slots; the two destructors are entries 1 and 2.
class TELEMETRY_EXPORT IRateLimiterConfigManager {
public:
    virtual ~IRateLimiterConfigManager() = default;
    /// Asked once for each identifier in the life of the process; twice if two guards see its first event at once. Must
    /// answer for unknown ones too.
    virtual RateLimitConfig getRateLimitConfig(const std::string& eventIdentifier) = 0;
};

}  // namespace Velo::OS::Telemetry
