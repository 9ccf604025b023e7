#include "telemetry/AppOverrideManager.h"

namespace Velo::OS::Telemetry {

namespace {

constexpr int64_t kNoApp = 0;

/// What stands under the key of a map; null if nothing does.
template <typename Map>
const typename Map::mapped_type* find(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : &found->second;
}

}  // namespace

AppOverrideManager::AppOverrideManager() = default;

void AppOverrideManager::setAppOverrideStr(const std::string& key, const std::string& value, uint32_t userId,
                                           int64_t appId) {
    if (appId == kNoApp || (key != "sdk_app_package_version_name" && key != "id")) return;
    stringOverrides_[{userId, appId}][key] = value;
}

void AppOverrideManager::setAppOverrideInt(const std::string& key, int64_t value, uint32_t userId, int64_t appId) {
    if (appId == kNoApp || key != "sdk_app_package_version_code") return;
    intOverrides_[{userId, appId}][key] = value;
}

std::vector<std::pair<std::string, Json::Value>> AppOverrideManager::getAllOverrides(uint32_t userId, int64_t appId) {
    std::vector<std::pair<std::string, Json::Value>> all;
    const auto append = [&](const auto* overrides) {
        if (overrides) all.insert(all.end(), overrides->begin(), overrides->end());
    };
    append(find(stringOverrides_, {userId, appId}));
    append(find(intOverrides_, {userId, appId}));
    return all;
}

std::optional<Json::Value> AppOverrideManager::getOverrideForKey(uint32_t userId, int64_t appId, std::string key) {
    if (const auto* strings = find(stringOverrides_, {userId, appId})) {
        if (const std::string* value = find(*strings, key)) return *value;
    }
    if (const auto* integers = find(intOverrides_, {userId, appId})) {
        if (const int64_t* value = find(*integers, key)) return *value;
    }
    return std::nullopt;
}

}  // namespace Velo::OS::Telemetry
