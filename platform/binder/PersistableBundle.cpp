// Bodies for the platform's own header, whose library Debian does not package.

#include <binder/PersistableBundle.h>

namespace android::os {

namespace {

template <typename Map>
std::set<String16> keysOf(const Map& map) {
    std::set<String16> keys;
    for (const auto& entry : map) keys.emplace_hint(keys.end(), entry.first);
    return keys;
}

template <typename Map, typename Value>
bool get(const Map& map, const String16& key, Value* out) {
    const auto found = map.find(key);
    if (found == map.end()) return false;
    *out = found->second;
    return true;
}

template <typename Map>
bool eraseFrom(Map& map, const String16& key) {
    const auto found = map.find(key);
    if (found == map.end()) return false;
    map.erase(found);
    return true;
}

}  // namespace

// A desk has no binder.
status_t PersistableBundle::writeToParcel(Parcel* /*parcel*/) const { return INVALID_OPERATION; }
status_t PersistableBundle::readFromParcel(const Parcel* /*parcel*/) { return INVALID_OPERATION; }

bool PersistableBundle::empty() const { return size() == 0; }

size_t PersistableBundle::size() const {
    return mBoolMap.size() + mIntMap.size() + mLongMap.size() + mDoubleMap.size() + mStringMap.size() +
           mBoolVectorMap.size() + mIntVectorMap.size() + mLongVectorMap.size() + mDoubleVectorMap.size() +
           mStringVectorMap.size() + mPersistableBundleMap.size();
}

size_t PersistableBundle::erase(const String16& key) {
    // A key has one type at a time, so the first removal is the only one.
    const bool removed = eraseFrom(mBoolMap, key) || eraseFrom(mIntMap, key) || eraseFrom(mLongMap, key) ||
                         eraseFrom(mDoubleMap, key) || eraseFrom(mStringMap, key) || eraseFrom(mBoolVectorMap, key) ||
                         eraseFrom(mIntVectorMap, key) || eraseFrom(mLongVectorMap, key) ||
                         eraseFrom(mDoubleVectorMap, key) || eraseFrom(mStringVectorMap, key) ||
                         eraseFrom(mPersistableBundleMap, key);
    return removed ? 1 : 0;
}

void PersistableBundle::putBoolean(const String16& key, bool value) {
    erase(key);
    mBoolMap[key] = value;
}

void PersistableBundle::putInt(const String16& key, int32_t value) {
    erase(key);
    mIntMap[key] = value;
}

void PersistableBundle::putLong(const String16& key, int64_t value) {
    erase(key);
    mLongMap[key] = value;
}

void PersistableBundle::putDouble(const String16& key, double value) {
    erase(key);
    mDoubleMap[key] = value;
}

void PersistableBundle::putString(const String16& key, const String16& value) {
    erase(key);
    mStringMap[key] = value;
}

void PersistableBundle::putBooleanVector(const String16& key, const std::vector<bool>& value) {
    erase(key);
    mBoolVectorMap[key] = value;
}

void PersistableBundle::putIntVector(const String16& key, const std::vector<int32_t>& value) {
    erase(key);
    mIntVectorMap[key] = value;
}

void PersistableBundle::putLongVector(const String16& key, const std::vector<int64_t>& value) {
    erase(key);
    mLongVectorMap[key] = value;
}

void PersistableBundle::putDoubleVector(const String16& key, const std::vector<double>& value) {
    erase(key);
    mDoubleVectorMap[key] = value;
}

void PersistableBundle::putStringVector(const String16& key, const std::vector<String16>& value) {
    erase(key);
    mStringVectorMap[key] = value;
}

void PersistableBundle::putPersistableBundle(const String16& key, const PersistableBundle& value) {
    erase(key);
    mPersistableBundleMap.emplace(key, value);
}

bool PersistableBundle::getBoolean(const String16& key, bool* out) const { return get(mBoolMap, key, out); }

bool PersistableBundle::getInt(const String16& key, int32_t* out) const { return get(mIntMap, key, out); }

bool PersistableBundle::getLong(const String16& key, int64_t* out) const { return get(mLongMap, key, out); }

bool PersistableBundle::getDouble(const String16& key, double* out) const { return get(mDoubleMap, key, out); }

bool PersistableBundle::getString(const String16& key, String16* out) const { return get(mStringMap, key, out); }

bool PersistableBundle::getBooleanVector(const String16& key, std::vector<bool>* out) const {
    return get(mBoolVectorMap, key, out);
}

bool PersistableBundle::getIntVector(const String16& key, std::vector<int32_t>* out) const {
    return get(mIntVectorMap, key, out);
}

bool PersistableBundle::getLongVector(const String16& key, std::vector<int64_t>* out) const {
    return get(mLongVectorMap, key, out);
}

bool PersistableBundle::getDoubleVector(const String16& key, std::vector<double>* out) const {
    return get(mDoubleVectorMap, key, out);
}

bool PersistableBundle::getStringVector(const String16& key, std::vector<String16>* out) const {
    return get(mStringVectorMap, key, out);
}

bool PersistableBundle::getPersistableBundle(const String16& key, PersistableBundle* out) const {
    return get(mPersistableBundleMap, key, out);
}

std::set<String16> PersistableBundle::getBooleanKeys() const { return keysOf(mBoolMap); }
std::set<String16> PersistableBundle::getIntKeys() const { return keysOf(mIntMap); }
std::set<String16> PersistableBundle::getLongKeys() const { return keysOf(mLongMap); }
std::set<String16> PersistableBundle::getDoubleKeys() const { return keysOf(mDoubleMap); }
std::set<String16> PersistableBundle::getStringKeys() const { return keysOf(mStringMap); }
std::set<String16> PersistableBundle::getBooleanVectorKeys() const { return keysOf(mBoolVectorMap); }
std::set<String16> PersistableBundle::getIntVectorKeys() const { return keysOf(mIntVectorMap); }
std::set<String16> PersistableBundle::getLongVectorKeys() const { return keysOf(mLongVectorMap); }
std::set<String16> PersistableBundle::getDoubleVectorKeys() const { return keysOf(mDoubleVectorMap); }
std::set<String16> PersistableBundle::getStringVectorKeys() const { return keysOf(mStringVectorMap); }
std::set<String16> PersistableBundle::getPersistableBundleKeys() const { return keysOf(mPersistableBundleMap); }

}  // namespace android::os
