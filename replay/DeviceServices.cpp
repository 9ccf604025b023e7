#include "replay/DeviceServices.h"

#include <iterator>

namespace Velo::OS::Telemetry::replay {

namespace {

template <typename Map>
typename Map::mapped_type valueOr(const Map& map, const typename Map::key_type& key,
                                  typename Map::mapped_type otherwise = {}) {
    const auto found = map.find(key);
    return found == map.end() ? otherwise : found->second;
}

}  // namespace

Device::User DeviceServices::user(std::optional<int32_t> userId) const {
    return valueOr(device_.users, userId.value_or(0));
}

int32_t DeviceServices::getManagedMode(int64_t /*momentNs*/, std::optional<int32_t> userId) {
    return user(userId).managedMode;
}

bool DeviceServices::getAccountMode(int64_t /*momentNs*/, std::optional<int32_t> userId) {
    return user(userId).accountMode;
}

std::string DeviceServices::getUserIdForUid(uint32_t uid) { return valueOr(device_.identities, uid); }

PackageInfo DeviceServices::getPackageInfo(const std::string& packageName, uint32_t uid) {
    return valueOr(device_.packages, {packageName, uid}, {packageName, 0, ""});
}

Json::Value DeviceServices::getSessions(int32_t userId) { return valueOr(device_.sessions.legacy, userId); }

std::string DeviceServices::getSessionsV2(int64_t momentNs) {
    const auto& contexts = device_.sessions.contexts;
    const auto later = contexts.upper_bound(momentNs / 1'000'000);
    return later == contexts.begin() ? std::string() : std::prev(later)->second;
}

}  // namespace Velo::OS::Telemetry::replay
