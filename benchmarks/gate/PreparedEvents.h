#pragma once

#include <binder/PersistableBundle.h>
#include <json/reader.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/gate/EventLines.h"
#include "replay/BundleFromJson.h"

namespace Velo::OS::Telemetry::benchmarks {

/// An event of a known user, its data in both forms.
struct PreparedEvent {
    std::string name;
    uint32_t uid;
    Json::Value data;  // without nulls, which no bundle can hold
    android::os::PersistableBundle bundle;
};

inline std::vector<PreparedEvent> preparedEvents() {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::vector<PreparedEvent> events;
    for (const std::string& line : makeEventLines(Users::Known, 400)) {
        Json::Value root;
        if (!reader->parse(line.data(), line.data() + line.size(), &root, nullptr)) throw std::runtime_error(line);
        PreparedEvent& event = events.emplace_back();
        event.name = root["name"].asString();
        event.uid = root["uid"].asUInt();
        root["data"].removeMember("error");
        if (const auto fault = replay::bundleFromJson(root["data"], line, "data", event.bundle)) {
            throw std::runtime_error(*fault);
        }
        event.data = root["data"];
    }
    return events;
}

}  // namespace Velo::OS::Telemetry::benchmarks
