#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "telemetry/AppOverrideManager.h"
#include "telemetry/IDynamicTelemetryManager.h"
#include "telemetry/IPackageInfoManager.h"
#include "telemetry/IRateLimiterConfigManager.h"

namespace Velo::OS::Telemetry::replay {

/// What the pipeline can learn of the device on which the events were captured. A fresh one knows nothing.
struct Device {
    struct User {
        int32_t managedMode = 0;
        bool accountMode = false;
        bool consent = false;  // to what is not essential
        bool dataUseConsent = false;
        bool parviAccount = false;
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

    struct RateLimits {
        RateLimitConfig byDefault;
        std::map<std::string, RateLimitConfig> byIdentifier;
    };

    struct Filter {
        bool enabled = false;
        std::set<std::string> discretionaryPackages;  // whose events pass
    };

    struct DynamicTelemetry {
        struct Rule {
            bool keep = true;
            double sampleRate = 1;  // the share of the events that is kept
        };

        /// What the service has gathered for the guard to report.
        struct Records {
            PerformanceLogs performance;
            std::vector<ConfigFetchLog> fetches;
        };

        uint64_t seed = 1;                        // of the draws
        std::map<uint32_t, std::string> configs;  // the id of the active one by Android user
        std::map<std::string, Rule> events;       // by name; one that has no rule is kept
        std::multimap<int64_t, Records> records;  // by the moment, ms since boot, from which they wait
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
    // By the moment, ms since boot, from which each holds; before the first, telemetry is enabled.
    std::map<int64_t, bool> telemetryEnabled;
    bool intakeGate = false;  // of the intake monitor
    std::set<std::string> eventsInVerification;
    RateLimits rateLimits;
    std::set<uint32_t> checkpointedUids;
    Filter filter;
    DynamicTelemetry dynamicTelemetry;
};

}  // namespace Velo::OS::Telemetry::replay
