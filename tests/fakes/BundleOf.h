#pragma once

#include <binder/PersistableBundle.h>

#include <cstdint>
#include <vector>

namespace Velo::OS::Telemetry::fakes {

/// A bundle that reads as its contents: `BundleOf().with("k", 5).with("o", BundleOf())`.
class BundleOf : public android::os::PersistableBundle {
public:
    BundleOf& with(const char* key, bool value) { return putBoolean(android::String16(key), value), *this; }
    BundleOf& with(const char* key, int32_t value) { return putInt(android::String16(key), value), *this; }
    BundleOf& with(const char* key, int64_t value) { return putLong(android::String16(key), value), *this; }
    BundleOf& with(const char* key, double value) { return putDouble(android::String16(key), value), *this; }
    BundleOf& with(const char* key, const char* value) {
        return putString(android::String16(key), android::String16(value)), *this;
    }
    BundleOf& with(const char* key, const std::vector<const char*>& texts) {
        std::vector<android::String16> converted;
        for (const char* text : texts) converted.emplace_back(text);
        return putStringVector(android::String16(key), converted), *this;
    }
    BundleOf& with(const char* key, const std::vector<int32_t>& value) {
        return putIntVector(android::String16(key), value), *this;
    }
    BundleOf& with(const char* key, const android::os::PersistableBundle& value) {
        return putPersistableBundle(android::String16(key), value), *this;
    }
    /// Adds a bool without removing what the key holds under other types, as a parcel from another process can.
    BundleOf& withSecondType(const char* key, bool value);
};

/// Opens the map that no public operation fills without emptying the others.
template <auto Map>
struct Opened {
    friend auto& booleansOf(android::os::PersistableBundle& bundle) { return bundle.*Map; }
};
template struct Opened<&android::os::PersistableBundle::mBoolMap>;
auto& booleansOf(android::os::PersistableBundle& bundle);

inline BundleOf& BundleOf::withSecondType(const char* key, bool value) {
    booleansOf(*this)[android::String16(key)] = value;
    return *this;
}

/// A bundle that stands for an array; its elements are added like members.
inline BundleOf arrayOf() { return BundleOf().with("utl_array_of_bundles", true); }

}  // namespace Velo::OS::Telemetry::fakes
