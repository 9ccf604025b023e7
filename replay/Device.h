#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "telemetry/AppOverrideManager.h"
#include "telemetry/IPackageInfoManager.h"

namespace Velo::OS::Telemetry::replay {

/// What the pipeline can learn of the device on which the events were captured. A fresh one knows nothing.
struct Device {
    struct User {
        int32_t managedMode = 0;
        bool accountMode = false;
    };

    struct Sessions {
        bool attachToAllEvents = false;
        std::map<int64_t, std::string> contexts;  // by the moment, ms since boot, from which each holds
        std::map<int32_t, Json::Value> legacy;    // by Android user
    };

    struct Clock {
        bool adjusted = false;
        std::optional<uint64_t> timeMs, bootTimeMs;  // none: what this machine's clocks show
    };

    std::optional<std::string> telemetryId, morlekId;
    std::map<std::string, std::string> systemProperties;
    std::map<int32_t, User> users;
    std::map<uint32_t, std::string> identities;  // user ids by uid
    std::map<std::pair<std::string, uint32_t>, PackageInfo> packages;
    PackageInfo foreground;
    Sessions sessions;
    std::shared_ptr<IAppOverrideManager> appOverrides = std::make_shared<AppOverrideManager>();
    Clock clock;
};

}  // namespace Velo::OS::Telemetry::replay
