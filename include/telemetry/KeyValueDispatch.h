#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "telemetry/Export.h"
#include "telemetry/IStorageCache.h"

namespace Velo::OS::Telemetry {

/// A handle on one store of the storage cache. Every operation is the cache's own, for that store; the handle is as
/// thread-safe as the cache is. The layout is ABI.
class TELEMETRY_EXPORT KeyValueDispatch {
public:
    /// The cache is shared and must not be null.
    KeyValueDispatch(Store store, const std::string& storeName, std::shared_ptr<IStorageCache> storageCache);

    std::string getValue(const std::string& key, const std::string& defaultValue) const;
    bool setValue(const std::string& key, const std::string& value) const;
    bool removeValue(const std::string& key) const;
    bool listKeys(std::unordered_set<std::string>& keys) const;

private:
    std::shared_ptr<IStorageCache> storageCache_;
    std::string storeName_;
    Store store_;
};

}  // namespace Velo::OS::Telemetry
