#pragma once

#include <mutex>

#include "replay/StoreFile.h"
#include "telemetry/LockAnnotations.h"
#include "telemetry/StorageCache.h"

namespace Velo::OS::Telemetry::replay {

/// The key-value stores of a device, in one table. Safe to call from several threads. What fails is thrown and passes
/// through the library: a replay cannot go on without its store.
class StoredKeyValues : public StorageCache {
public:
    /// The file must outlive it.
    explicit StoredKeyValues(StoreFile& file);

    std::string getValue(Store store, const std::string& storeName, const std::string& key,
                         const std::string& defaultValue) override;
    bool setValue(Store store, const std::string& storeName, const std::string& key, const std::string& value) override;
    bool removeValue(Store store, const std::string& storeName, const std::string& key) override;
    bool listKeys(Store store, const std::string& storeName, std::unordered_set<std::string>& keys) override;

private:
    std::mutex mutex_;
    StoreFile::Statement get_ TELEMETRY_GUARDED_BY(mutex_);
    StoreFile::Statement set_ TELEMETRY_GUARDED_BY(mutex_);
    StoreFile::Statement remove_ TELEMETRY_GUARDED_BY(mutex_);
    StoreFile::Statement list_ TELEMETRY_GUARDED_BY(mutex_);
};

}  // namespace Velo::OS::Telemetry::replay
