#include "replay/DeviceServices.h"

#include <cutils/multiuser.h>

#include <iterator>

namespace Velo::OS::Telemetry::replay {

namespace {

template <typename Map>
typename Map::mapped_type valueOr(const Map& map, const typename Map::key_type& key,
                                  typename Map::mapped_type otherwise = {}) {
    const auto found = map.find(key);
    return found == map.end() ? otherwise : found->second;
}

/// What holds at a moment of a timeline.
template <typename T>
T valueAt(const std::map<int64_t, T>& timeline, int64_t momentMs, T beforeTheFirst) {
    const auto later = timeline.upper_bound(momentMs);
    return later == timeline.begin() ? beforeTheFirst : std::prev(later)->second;
}

}  // namespace

Device::User DeviceServices::user(std::optional<int32_t> userId) const {
    return valueOr(device_.users, userId.value_or(0));
}

Device::User DeviceServices::userOf(uint32_t uid) const {
    return user(static_cast<int32_t>(multiuser_get_user_id(uid)));
}

bool DeviceServices::isTelemetryEnabled() { return valueAt(device_.telemetryEnabled, momentMs_, true); }

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
    return valueAt(device_.sessions.contexts, momentNs / 1'000'000, {});
}

RateLimitConfig DeviceServices::getRateLimitConfig(const std::string& eventIdentifier) {
    return valueOr(device_.rateLimits.byIdentifier, eventIdentifier, device_.rateLimits.byDefault);
}

}  // namespace Velo::OS::Telemetry::replay
