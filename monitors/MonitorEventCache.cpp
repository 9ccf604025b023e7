#include "telemetry/MonitorEventCache.h"

#include <utility>

#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

MonitorEventCache::Decisions& MonitorEventCache::eventFilteringCache = immortal<Decisions>();
std::mutex& MonitorEventCache::lock_ = immortal<std::mutex>();

bool MonitorEventCache::checkAndSetFilterDecisionCache(unsigned int uid, const std::string& eventName, bool decision) {
    const std::lock_guard<std::mutex> lock(lock_);
    const auto [last, isNew] = eventFilteringCache[eventName].try_emplace(uid, decision);
    return !isNew && std::exchange(last->second, decision) == decision;
}

}  // namespace Velo::OS::Telemetry
