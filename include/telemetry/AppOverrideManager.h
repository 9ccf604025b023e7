#pragma once

#include <map>

#include "telemetry/IAppOverrideManager.h"

namespace Velo::OS::Telemetry {

/// Keeps overrides in memory; there is no removal. It has no lock: see `IAppOverrideManager`. The layout is ABI.
class TELEMETRY_EXPORT AppOverrideManager : public IAppOverrideManager {
public:
    AppOverrideManager();

    /// Ignores every key but "id" and "sdk_app_package_version_name", and app id 0.
    void setAppOverrideStr(const std::string& key, const std::string& value, uint32_t userId, int64_t appId) override;
    /// Ignores every key but "sdk_app_package_version_code", and app id 0.
    void setAppOverrideInt(const std::string& key, int64_t value, uint32_t userId, int64_t appId) override;
    std::vector<std::pair<std::string, Json::Value>> getAllOverrides(uint32_t userId, int64_t appId) override;
    std::optional<Json::Value> getOverrideForKey(uint32_t userId, int64_t appId, std::string key) override;

private:
    using UserAndApp = std::pair<uint32_t, int64_t>;

    std::map<UserAndApp, std::map<std::string, std::string>> stringOverrides_;
    std::map<UserAndApp, std::map<std::string, int64_t>> intOverrides_;
};

}  // namespace Velo::OS::Telemetry
