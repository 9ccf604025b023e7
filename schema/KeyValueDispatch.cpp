#include "telemetry/KeyValueDispatch.h"

#include <utility>

namespace Velo::OS::Telemetry {

KeyValueDispatch::KeyValueDispatch(Store store, const std::string& storeName,
                                   std::shared_ptr<IStorageCache> storageCache)
    : storageCache_(std::move(storageCache)), storeName_(storeName), store_(store) {}

std::string KeyValueDispatch::getValue(const std::string& key, const std::string& defaultValue) const {
    return storageCache_->getValue(store_, storeName_, key, defaultValue);
}

bool KeyValueDispatch::setValue(const std::string& key, const std::string& value) const {
    return storageCache_->setValue(store_, storeName_, key, value);
}

bool KeyValueDispatch::removeValue(const std::string& key) const {
    return storageCache_->removeValue(store_, storeName_, key);
}

bool KeyValueDispatch::listKeys(std::unordered_set<std::string>& keys) const {
    return storageCache_->listKeys(store_, storeName_, keys);
}

}  // namespace Velo::OS::Telemetry
