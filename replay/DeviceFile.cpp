#include "replay/DeviceFile.h"

#include "replay/FileError.h"
#include "replay/JsonNode.h"
#include "replay/StrictJson.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr size_t kMaxBytes = 16 * 1024 * 1024;

std::string contentsOf(InputFile& file) {
    std::string contents;
    for (size_t filled = 0;;) {
        contents.resize(filled + 64 * 1024);
        const size_t count = file.read(contents.data() + filled, contents.size() - filled);
        filled += count;
        if (filled > kMaxBytes) throw FileError(file.name() + ": longer than " + std::to_string(kMaxBytes) + " bytes");
        if (count > 0) continue;
        contents.resize(filled);
        return contents;
    }
}

Json::Value parseFile(InputFile& file) {
    const std::string contents = contentsOf(file);
    Json::Value root;
    if (const auto fault = StrictJson().parse(contents, root)) {
        throw FileError(file.name() + ":" + std::to_string(fault->line) + ": " + fault->text);
    }
    return root;
}

constexpr auto into = [](auto& out) { return JsonNode::into(out); };

void readUser(const JsonNode& node, Device::User& user) {
    node.object({{"managed_mode", into(user.managedMode)}, {"account_mode", into(user.accountMode)}});
}

void readPackages(const JsonNode& node, Device& device) {
    node.members([&](const std::string& name, const JsonNode& uids) {
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

void readSessions(const JsonNode& node, Device::Sessions& sessions) {
    const auto readLegacy = [&](const JsonNode& users) {
        users.numbered<int32_t>([&](int32_t user, const JsonNode& context) { context.read(sessions.legacy[user]); });
    };
    const auto readContext = [&](const JsonNode& element) {
        int64_t sinceMs = 0;
        std::string context;
        element.object({{"since_ms", into(sinceMs)}, {"context", into(context)}});
        if (!sessions.contexts.emplace(sinceMs, context).second) element.fail("another one has the same since_ms");
    };
    node.object({{"attach_to_all_events", into(sessions.attachToAllEvents)},
                 {"legacy", readLegacy},
                 {"v2", [&](const JsonNode& contexts) { contexts.elements(readContext); }}});
}

void readAppOverrides(const JsonNode& node, IAppOverrideManager& overrides) {
    node.numbered<uint32_t>([&](uint32_t uid, const JsonNode& apps) {
        apps.numbered<int64_t>([&](int64_t appId, const JsonNode& app) {
            if (appId == 0) app.fail("0 stands for no application, which has no overrides");
            const auto text = [&](const char* key) {
                return JsonNode::Field{key, [&, key](const JsonNode& value) {
                                           std::string string;
                                           value.read(string);
                                           overrides.setAppOverrideStr(key, string, uid, appId);
                                       }};
            };
            const auto setCode = [&](const JsonNode& value) {
                int64_t code = 0;
                value.read(code);
                overrides.setAppOverrideInt("sdk_app_package_version_code", code, uid, appId);
            };
            app.object({text("id"), text("sdk_app_package_version_name"), {"sdk_app_package_version_code", setCode}});
        });
    });
}

}  // namespace

Device readDevice(InputFile& file) {
    Device device;
    const Json::Value root = parseFile(file);
    JsonNode(root, file.name())
        .object({
            {"device_ids",
             [&](const JsonNode& node) {
                 node.object({{"telemetry", into(device.telemetryId)}, {"morlek", into(device.morlekId)}});
             }},
            {"system_properties",
             [&](const JsonNode& node) {
                 node.members([&](const auto& name, const auto& value) { value.read(device.systemProperties[name]); });
             }},
            {"users",
             [&](const JsonNode& node) {
                 node.numbered<int32_t>([&](int32_t id, const auto& user) { readUser(user, device.users[id]); });
             }},
            {"identities",
             [&](const JsonNode& node) {
                 node.numbered<uint32_t>([&](uint32_t uid, const auto& id) { id.read(device.identities[uid]); });
             }},
            {"packages", [&](const JsonNode& node) { readPackages(node, device); }},
            {"foreground", [&](const JsonNode& node) { readForeground(node, device.foreground); }},
            {"sessions", [&](const JsonNode& node) { readSessions(node, device.sessions); }},
            {"app_overrides", [&](const JsonNode& node) { readAppOverrides(node, *device.appOverrides); }},
            {"clock",
             [&](const JsonNode& node) {
                 node.object({{"adjusted", into(device.clock.adjusted)},
                              {"time_ms", into(device.clock.timeMs)},
                              {"boot_time_ms", into(device.clock.bootTimeMs)}});
             }},
        });
    return device;
}

}  // namespace Velo::OS::Telemetry::replay
