#pragma once

#include <map>
#include <string>
#include <tuple>

#include "telemetry/StorageCache.h"

namespace Velo::OS::Telemetry::fakes {

/// Stores in memory.
class FakeStorageCache : public StorageCache {
public:
    using Place = std::tuple<Store, std::string, std::string>;  // kind, name, key

    std::string getValue(Store store, const std::string& name, const std::string& key,
                         const std::string& defaultValue) override {
        const auto found = values.find({store, name, key});
        return found == values.end() ? defaultValue : found->second;
    }
    bool setValue(Store store, const std::string& name, const std::string& key, const std::string& value) override {
        if (works) values[{store, name, key}] = value;
        return works;
    }
    bool removeValue(Store store, const std::string& name, const std::string& key) override {
        if (works) values.erase({store, name, key});
        return works;
    }
    bool listKeys(Store store, const std::string& name, std::unordered_set<std::string>& keys) override {
        for (const auto& [place, value] : values) {
            if (std::get<0>(place) == store && std::get<1>(place) == name) keys.insert(std::get<2>(place));
        }
        return works;
    }

    std::map<Place, std::string> values;
    bool works = true;
};

}  // namespace Velo::OS::Telemetry::fakes
