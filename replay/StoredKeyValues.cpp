#include "replay/StoredKeyValues.h"

namespace Velo::OS::Telemetry::replay {

namespace {

StoreFile& withTable(StoreFile& file) {
    file.createTable(StoreFile::kKeyValues);
    return file;
}

StoreFile::Statement& bindStore(StoreFile::Statement& statement, Store store, const std::string& storeName) {
    return statement.bind(1, static_cast<int64_t>(store)).bind(2, storeName);
}

}  // namespace

StoredKeyValues::StoredKeyValues(StoreFile& file)
    : get_(withTable(file), "SELECT value FROM key_values WHERE kind = ?1 AND store = ?2 AND key = ?3"),
      set_(file, "INSERT OR REPLACE INTO key_values VALUES(?1, ?2, ?3, ?4)"),
      remove_(file, "DELETE FROM key_values WHERE kind = ?1 AND store = ?2 AND key = ?3"),
      list_(file, "SELECT key FROM key_values WHERE kind = ?1 AND store = ?2") {}

std::string StoredKeyValues::getValue(Store store, const std::string& storeName, const std::string& key,
                                      const std::string& defaultValue) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::vector<std::string> values = bindStore(get_, store, storeName).bind(3, key).texts();
    return values.empty() ? defaultValue : values.front();
}

bool StoredKeyValues::setValue(Store store, const std::string& storeName, const std::string& key,
                               const std::string& value) {
    const std::lock_guard<std::mutex> lock(mutex_);
    bindStore(set_, store, storeName).bind(3, key).bind(4, value).run();
    return true;
}

bool StoredKeyValues::removeValue(Store store, const std::string& storeName, const std::string& key) {
    const std::lock_guard<std::mutex> lock(mutex_);
    bindStore(remove_, store, storeName).bind(3, key).run();
    return true;
}

bool StoredKeyValues::listKeys(Store store, const std::string& storeName, std::unordered_set<std::string>& keys) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (std::string& key : bindStore(list_, store, storeName).texts()) keys.insert(std::move(key));
    return true;
}

}  // namespace Velo::OS::Telemetry::replay
