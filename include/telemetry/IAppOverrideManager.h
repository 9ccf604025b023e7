#pragma once

#include <json/value.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Values that an application has asked to be put on its events instead of what the system reports. They are kept per
/// user and app id; app id 0 stands for no application, which has none. Deliberate: the appliers pass the event's uid
/// as the user, so overrides for them are to be set under uids.
///
/// The order of the virtual operations is ABI. Calls that set must not run beside any other.
class TELEMETRY_EXPORT IAppOverrideManager {
public:
    virtual ~IAppOverrideManager() = default;
    virtual void setAppOverrideStr(const std::string& key, const std::string& value, uint32_t userId,
                                   int64_t appId) = 0;
    virtual void setAppOverrideInt(const std::string& key, int64_t value, uint32_t userId, int64_t appId) = 0;
    /// Every override of the pair: texts, then integers, each in the order of their keys.
    virtual std::vector<std::pair<std::string, Json::Value>> getAllOverrides(uint32_t userId, int64_t appId) = 0;
    virtual std::optional<Json::Value> getOverrideForKey(uint32_t userId, int64_t appId, std::string key) = 0;
};

}  // namespace Velo::OS::Telemetry
