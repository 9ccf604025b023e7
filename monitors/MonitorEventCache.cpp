#include "telemetry/MonitorEventCache.h"

#include <utility>

namespace Velo::OS::Telemetry {

std::unordered_map<std::string, std::unordered_map<unsigned int, bool>> MonitorEventCache::eventFilteringCache;
std::mutex MonitorEventCache::lock_;

bool MonitorEventCache::checkAndSetFilterDecisionCache(unsigned int uid, const std::string& eventName, bool decision) {
    const std::lock_guard<std::mutex> lock(lock_);
    const auto [last, isNew] = eventFilteringCache[eventName].try_emplace(uid, decision);
    return !isNew && std::exchange(last->second, decision) == decision;
}

}  // namespace Velo::OS::Telemetry
