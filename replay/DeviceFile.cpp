#include "replay/DeviceFile.h"

#include <limits>

#include "replay/JsonFile.h"
#include "replay/Suggestion.h"
#include "telemetry/TelemetrySorelconfigs.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr size_t kMaxPackageNameBytes = 1024;  // each of the uids below it has a copy of it

void readIds(const JsonNode& node, Device& device) {
    node.object({{"telemetry", into(device.telemetryId)}, {"morlek", into(device.morlekId)}});
}

void readSystemProperties(const JsonNode& node, Device& device) {
    node.members([&](const std::string& name, const JsonNode& member) {
        std::string& value = device.systemProperties[name];
        member.read(value);
        if ((name + value).find('\0') != std::string::npos) member.fail("a system property cannot hold a NUL");
    });
}

void readUsers(const JsonNode& node, Device& device) {
    node.numbered<int32_t>([&](int32_t id, const JsonNode& member) {
        Device::User& user = device.users[id];
        member.object({{"managed_mode", into(user.managedMode)},
                       {"account_mode", into(user.accountMode)},
                       {"consent", into(user.consent)},
                       {"data_use_consent", into(user.dataUseConsent)},
                       {"parvi_account", into(user.parviAccount)}});
    });
}

void readPackages(const JsonNode& node, Device& device) {
    node.members([&](const std::string& name, const JsonNode& uids) {
        if (name.size() > kMaxPackageNameBytes) {
            uids.fail("expected a name of at most " + std::to_string(kMaxPackageNameBytes) + " bytes");
        }
        uids.numbered<uint32_t>([&](uint32_t uid, const JsonNode& package) {
            PackageInfo& info = device.packages[{name, uid}];
            info.packageName = name;
            package.object({{"version_name", into(info.versionName)}, {"version_code", into(info.versionCode)}});
        });
    });
}

void readForeground(const JsonNode& node, PackageInfo& foreground) {
    node.object({{"package", into(foreground.packageName)}, {"version_name", into(foreground.versionName)}});
}

/// What holds when: an array of objects that name the moment and, in the field, the value from then on.
template <typename T>
void readTimeline(const JsonNode& node, const char* field, T ifAbsent, std::map<int64_t, T>& timeline) {
    node.elements([&](const JsonNode& element) {
        int64_t sinceMs = 0;
        T value = ifAbsent;
        element.object({{"since_ms", into(sinceMs)}, {field, into(value)}});
        if (!timeline.emplace(sinceMs, std::move(value)).second) element.fail("another one has the same since_ms");
    });
}

void readSessions(const JsonNode& node, Device::Sessions& sessions) {
    node.object({{"attach_to_all_events", into(sessions.attachToAllEvents)},
                 {"legacy", into(sessions.legacy)},
                 {"v2", [&](const JsonNode& contexts) {
                      readTimeline<std::string>(contexts, "context", {}, sessions.contexts);
                  }}});
}

void readAppOverrides(const JsonNode& node, IAppOverrideManager& overrides) {
    node.numbered<uint32_t>([&](uint32_t uid, const JsonNode& apps) {
        apps.numbered<int64_t>([&](int64_t appId, const JsonNode& app) {
            if (appId == 0) app.fail("0 stands for no application, which has no overrides");
            std::optional<std::string> id, versionName;
            std::optional<int64_t> versionCode;
            app.object({{"id", into(id)},
                        {"sdk_app_package_version_name", into(versionName)},
                        {"sdk_app_package_version_code", into(versionCode)}});
            if (id) overrides.setAppOverrideStr("id", *id, uid, appId);
            if (versionName) overrides.setAppOverrideStr("sdk_app_package_version_name", *versionName, uid, appId);
            if (versionCode) overrides.setAppOverrideInt("sdk_app_package_version_code", *versionCode, uid, appId);
        });
    });
}

void readClock(const JsonNode& node, Device::Clock& clock) {
    node.object({{"adjusted", into(clock.adjusted)},
                 {"time_ms", into(clock.timeMs)},
                 {"boot_time_ms", into(clock.bootTimeMs)}});
    if (clock.timeMs.has_value() != clock.bootTimeMs.has_value()) node.fail("time_ms and boot_time_ms go together");
}

void readTelemetryEnabled(const JsonNode& node, std::map<int64_t, bool>& enabled) {
    if (node.isArray()) return readTimeline(node, "enabled", true, enabled);
    bool always = true;
    node.read(always);
    enabled[std::numeric_limits<int64_t>::min()] = always;
}

void readRateLimits(const JsonNode& node, Device::RateLimits& limits) {
    const auto readLimit = [](const JsonNode& limit, RateLimitConfig& config) {
        limit.object({{"refill_count", into(config.refillCount)},
                      {"max_events", into(config.maxEvents)},
                      {"window_seconds", into(config.windowSeconds)}});
    };
    const auto readIdentifier = [&](const std::string& identifier, const JsonNode& limit) {
        readLimit(limit, limits.byIdentifier[identifier]);
    };
    node.object({{"default", [&](const JsonNode& limit) { readLimit(limit, limits.byDefault); }},
                 {"identifiers", [&](const JsonNode& identifiers) { identifiers.members(readIdentifier); }}});
}

void readFilter(const JsonNode& node, Device::Filter& filter) {
    node.object({{"enabled", into(filter.enabled)}, {"discretionary_packages", into(filter.discretionaryPackages)}});
}

void readOutcome(const JsonNode& node, FetchOutcome& outcome) {
    const std::pair<std::string_view, FetchOutcome> outcomes[] = {
        {"noChange", FetchOutcome::NoChange},           {"persistSuccess", FetchOutcome::PersistSuccess},
        {"persistError", FetchOutcome::PersistError},   {"parseError", FetchOutcome::ParseError},
        {"endpointError", FetchOutcome::EndpointError}, {"userTokenEmpty", FetchOutcome::UserTokenEmpty},
    };
    std::vector<std::string_view> names;
    std::string text;
    for (const auto& [name, value] : outcomes) {
        names.push_back(name);
        if (value == outcome) text = name;
    }
    node.read(text);
    for (const auto& [name, value] : outcomes) {
        if (text != name) continue;
        outcome = value;
        return;
    }
    node.fail("expected " + listed(names) + didYouMean(text, names));
}

void readRecords(const JsonNode& node, Device::DynamicTelemetry::Records& records, int64_t& atMs) {
    const auto readMetrics = [](std::unordered_map<std::string, int64_t>& metrics) {
        return [&metrics](const JsonNode& member) {
            member.members([&](const std::string& name, const JsonNode& metric) {
                if (name.find('\0') != std::string::npos) metric.fail("a key cannot hold a NUL");
                metric.read(metrics[name]);
            });
        };
    };
    const auto readGuardLog = [&](const JsonNode& guard) {
        auto& log = records.performance.guardLogs.emplace_back();
        guard.object({{"config_id", into(log.configId)},
                      {"logging_duration_ms", into(log.loggingDurationMs)},
                      {"metrics", readMetrics(log.metrics)}});
    };
    const auto readMonitorLog = [&](const JsonNode& monitor) {
        auto& log = records.performance.monitorLogs.emplace_back();
        monitor.object({{"config_id", into(log.configId)},
                        {"processed_event_name", into(log.processedEventName)},
                        {"logging_duration_ms", into(log.loggingDurationMs)},
                        {"metrics", readMetrics(log.metrics)}});
    };
    const auto readFetch = [&](const JsonNode& member) {
        ConfigFetchLog& fetch = records.fetches.emplace_back();
        member.object({{"active_config_id", into(fetch.activeConfigId)},
                       {"fetched_config_id", into(fetch.fetchedConfigId)},
                       {"finished_us", into(fetch.fetchFinished)},
                       {"outcome", [&](const JsonNode& outcome) { readOutcome(outcome, fetch.outcome); }}});
    };
    node.object({{"at_ms", into(atMs)},
                 {"guard", ifPresent(readGuardLog)},
                 {"monitor", ifPresent(readMonitorLog)},
                 {"fetch", ifPresent(readFetch)}});
}

void readDynamicTelemetry(const JsonNode& node, Device::DynamicTelemetry& telemetry) {
    const auto readSampleRate = [](const JsonNode& rate, double& sampleRate) {
        rate.read(sampleRate);
        if (!(sampleRate >= 0 && sampleRate <= 1)) rate.fail("expected a number from 0 to 1");
    };
    const auto readRule = [&](const std::string& eventName, const JsonNode& event) {
        Device::DynamicTelemetry::Rule& rule = telemetry.events[eventName];
        event.object({{"keep", into(rule.keep)},
                      {"sample_rate", [&](const JsonNode& rate) { readSampleRate(rate, rule.sampleRate); }}});
    };
    const auto addRecords = [&](const JsonNode& element) {
        int64_t atMs = 0;
        Device::DynamicTelemetry::Records records;
        readRecords(element, records, atMs);
        telemetry.records.emplace(atMs, std::move(records));
    };
    node.object({{"seed", into(telemetry.seed)},
                 {"configs", into(telemetry.configs)},
                 {"events", [&](const JsonNode& events) { events.members(readRule); }},
                 {"records", [&](const JsonNode& all) { all.elements(addRecords); }}});
}

Device readDevice(const JsonNode& root) {
    Device device;
    root.object({
        {"device_ids", [&](const JsonNode& node) { readIds(node, device); }},
        {"system_properties", [&](const JsonNode& node) { readSystemProperties(node, device); }},
        {"users", [&](const JsonNode& node) { readUsers(node, device); }},
        {"identities", into(device.identities)},
        {"packages", [&](const JsonNode& node) { readPackages(node, device); }},
        {"foreground", [&](const JsonNode& node) { readForeground(node, device.foreground); }},
        {"sessions", [&](const JsonNode& node) { readSessions(node, device.sessions); }},
        {"app_overrides", [&](const JsonNode& node) { readAppOverrides(node, *device.appOverrides); }},
        {"telemetry_enabled", [&](const JsonNode& node) { readTelemetryEnabled(node, device.telemetryEnabled); }},
        {"feature_gates",
         [&](const JsonNode& node) {
             node.object({{TelemetrySorelconfigs::EnableIntakeMonitor, into(device.intakeGate)}});
         }},
        {"events_in_verification", into(device.eventsInVerification)},
        {"rate_limits", [&](const JsonNode& node) { readRateLimits(node, device.rateLimits); }},
        {"checkpointed_uids", into(device.checkpointedUids)},
        {"filter", [&](const JsonNode& node) { readFilter(node, device.filter); }},
        {"dynamic_telemetry", [&](const JsonNode& node) { readDynamicTelemetry(node, device.dynamicTelemetry); }},
        {"clock", [&](const JsonNode& node) { readClock(node, device.clock); }},
    });
    return device;
}

JsonFile parseDevice(InputFile& file) { return JsonFile(file); }

}  // namespace

Device readDevice(InputFile& file) { return readDevice(JsonNode(parseDevice(file))); }

std::vector<ReadValue> listDevice(InputFile* file) {
    std::vector<ReadValue> values;
    const JsonFile json = file ? parseDevice(*file) : JsonFile({}, "{}");
    readDevice(JsonNode(json, &values));
    return values;
}

}  // namespace Velo::OS::Telemetry::replay
