#include "benchmarks/gate/BundleByGetters.h"

#include <utils/String8.h>

#include <charconv>
#include <set>
#include <vector>

namespace Velo::OS::Telemetry::benchmarks {

namespace {

using android::String16;
using android::String8;
using android::os::PersistableBundle;

template <typename T>
using Getter = bool (PersistableBundle::*)(const String16&, T*) const;

Json::Value toJson(bool value) { return value; }
Json::Value toJson(int32_t value) { return value; }
Json::Value toJson(int64_t value) { return Json::Int64{value}; }
Json::Value toJson(double value) { return value; }
Json::Value toJson(const String16& value) { return String8(value).c_str(); }
Json::Value toJson(PersistableBundle& value) { return bundleByGetters(value); }

Json::Value toJson(const std::vector<String16>& values) {
    Json::Value array(Json::arrayValue);
    for (const String16& value : values) array.append(toJson(value));
    return array;
}

/// The member or the element of that name.
Json::Value& childOf(Json::Value& parent, const String8& name) {
    if (!parent.isArray()) return parent[name.c_str()];
    Json::ArrayIndex index = 0;
    std::from_chars(name.c_str(), name.c_str() + name.size(), index);
    return parent[index];
}

template <typename T>
void insert(const PersistableBundle& bundle, const std::set<String16>& keys, Getter<T> get, Json::Value& json) {
    for (const String16& key : keys) {
        T value{};
        (bundle.*get)(key, &value);
        childOf(json, String8(key)) = toJson(value);
    }
}

}  // namespace

Json::Value bundleByGetters(PersistableBundle& bundle) {
    static const String16 marker("utl_array_of_bundles");
    Json::Value json(bundle.erase(marker) > 0 ? Json::arrayValue : Json::objectValue);
    insert<bool>(bundle, bundle.getBooleanKeys(), &PersistableBundle::getBoolean, json);
    insert<int32_t>(bundle, bundle.getIntKeys(), &PersistableBundle::getInt, json);
    insert<int64_t>(bundle, bundle.getLongKeys(), &PersistableBundle::getLong, json);
    insert<double>(bundle, bundle.getDoubleKeys(), &PersistableBundle::getDouble, json);
    insert<String16>(bundle, bundle.getStringKeys(), &PersistableBundle::getString, json);
    insert<std::vector<String16>>(bundle, bundle.getStringVectorKeys(), &PersistableBundle::getStringVector, json);
    insert<PersistableBundle>(bundle, bundle.getPersistableBundleKeys(), &PersistableBundle::getPersistableBundle,
                              json);
    return json;
}

}  // namespace Velo::OS::Telemetry::benchmarks
