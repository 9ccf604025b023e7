#include "conversion/Nesting.h"

#include <utility>
#include <vector>

namespace Velo::OS::Telemetry {

namespace {

bool isContainer(const Json::Value& value) {
    const Json::ValueType type = value.type();
    return type == Json::arrayValue || type == Json::objectValue;
}

}  // namespace

bool nestsDeeperThan(unsigned limit, const Json::Value& value) {
    if (!isContainer(value)) return false;
    if (limit == 0) return true;
    const auto end = value.end();
    for (auto member = value.begin(); member != end; ++member) {
        if (nestsDeeperThan(limit - 1, *member)) return true;
    }
    return false;
}

void dismantle(Json::Value& value) {
    std::vector<Json::Value> pending;
    pending.push_back(std::exchange(value, Json::Value()));
    while (!pending.empty()) {
        Json::Value outer = std::move(pending.back());
        pending.pop_back();
        for (Json::Value& inner : outer) {
            if (isContainer(inner)) pending.push_back(std::move(inner));
        }
    }
}

}  // namespace Velo::OS::Telemetry
