#pragma once

#include <json/value.h>

#include <cstdint>
#include <optional>
#include <string>

namespace Velo::OS::Telemetry::replay {

/// The members of a line that make its event, each of its type; nullopt for one that is absent. `EventDecoder` says
/// what they mean. `data` and `bundle` are objects; `name` is always there.
struct LineMembers {
    std::optional<std::string> name;
    std::optional<uint32_t> uid;
    std::optional<bool> realtime;
    std::optional<std::string> format;
    std::optional<int32_t> atomId;
    std::optional<Json::Value> data;
    std::optional<Json::Value> bundle;
};

}  // namespace Velo::OS::Telemetry::replay
