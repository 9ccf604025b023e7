#pragma once

#include <mutex>
#include <string>
#include <unordered_map>

#include "telemetry/Export.h"
#include "telemetry/LockAnnotations.h"

namespace Velo::OS::Telemetry {

/// Remembers what was last decided about each event of each user, so that only what is new is reported. One cache for
/// the process, which never forgets: it grows with every event name and user. Safe to use from any thread.
class TELEMETRY_EXPORT MonitorEventCache {
public:
    /// Records the decision. Whether it is the very one that was recorded last, so that there is nothing to report.
    static bool checkAndSetFilterDecisionCache(unsigned int uid, const std::string& eventName, bool decision);

private:
    using Decisions = std::unordered_map<std::string, std::unordered_map<unsigned int, bool>>;

    // References to what is never destroyed: events may be processed while the process exits.
    static Decisions& eventFilteringCache TELEMETRY_GUARDED_BY(lock_);  // by name
    static std::mutex& lock_;
};

}  // namespace Velo::OS::Telemetry
