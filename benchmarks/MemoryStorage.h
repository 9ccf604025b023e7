#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "telemetry/StorageCache.h"

namespace Velo::OS::Telemetry::benchmarks {

/// One store in memory, whatever its name, that counts how often it is read.
class MemoryStorage : public StorageCache {
public:
    std::string getValue(Store /*store*/, const std::string& /*storeName*/, const std::string& key,
                         const std::string& defaultValue) override {
        ++reads;
        const auto found = values_.find(key);
        return found == values_.end() ? defaultValue : found->second;
    }
    bool setValue(Store /*store*/, const std::string& /*storeName*/, const std::string& key,
                  const std::string& value) override {
        values_[key] = value;
        return true;
    }
    bool removeValue(Store /*store*/, const std::string& /*storeName*/, const std::string& key) override {
        return values_.erase(key) > 0;
    }
    bool listKeys(Store /*store*/, const std::string& /*storeName*/, std::unordered_set<std::string>& keys) override {
        for (const auto& [key, value] : values_) keys.insert(key);
        return true;
    }

    uint64_t reads = 0;

private:
    std::unordered_map<std::string, std::string> values_;
};

}  // namespace Velo::OS::Telemetry::benchmarks
