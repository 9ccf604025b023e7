#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// The kind of a key-value store. Most kinds are the service's own business.
enum class Store : int32_t {
    EventSchema = 4,
};

/// The service's key-value stores, each addressed by its kind and name. Called from any thread, and with the
/// schema handler's lock held, so it must not call back into that.
///
/// The service was compiled against these slots.
class TELEMETRY_EXPORT IStorageCache {
public:
    virtual ~IStorageCache() = default;
    /// The value stored under the key, or `defaultValue` if there is none.
    virtual std::string getValue(Store store, const std::string& storeName, const std::string& key,
                                 const std::string& defaultValue) = 0;
    /// Stores the value under the key; whether that succeeded.
    virtual bool setValue(Store store, const std::string& storeName, const std::string& key,
                          const std::string& value) = 0;
    /// Removes the key; whether that succeeded.
    virtual bool removeValue(Store store, const std::string& storeName, const std::string& key) = 0;
    /// Fills the set with every key of the store; whether that succeeded.
    virtual bool listKeys(Store store, const std::string& storeName, std::unordered_set<std::string>& keys) = 0;
};

}  // namespace Velo::OS::Telemetry
