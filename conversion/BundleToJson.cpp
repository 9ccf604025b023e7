#include "telemetry/BundleToJson.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <vector>

#include "conversion/ArrayMarker.h"
#include "conversion/PlatformText.h"

namespace Velo::OS::Telemetry {

namespace {

using android::String16;
using android::os::PersistableBundle;
using Keys = std::set<String16>;

template <typename T>
using Getter = bool (PersistableBundle::*)(const String16&, T*) const;

/// Strings and keys end at their first NUL.
Json::Value toJson(const String16& text) {
    std::string utf8;
    toUtf8(text, utf8);
    return Json::Value(utf8);
}

Json::Value toJson(int64_t number) { return Json::Value(static_cast<Json::Int64>(number)); }

template <typename Scalar>
Json::Value toJson(Scalar scalar) {
    return Json::Value(scalar);
}

Json::Value toJson(const std::vector<String16>& texts) {
    Json::Value array(Json::arrayValue);
    array.resize(static_cast<Json::ArrayIndex>(texts.size()));
    for (Json::ArrayIndex i = 0; i < array.size(); ++i) array[i] = toJson(texts[i]);
    return array;
}

bool isConvertible(double number) { return std::isfinite(number); }

template <typename T>
bool isConvertible(const T&) {
    return true;
}

/// Sets `json` to what the bundle holds under the key.
template <typename T>
bool convertValue(const PersistableBundle& bundle, Getter<T> get, const String16& key, Json::Value& json) {
    T value{};
    if (!(bundle.*get)(key, &value) || !isConvertible(value)) return false;
    json = toJson(value);
    return true;
}

/// Merges the nested bundle into `json`; the bundle itself stays as it is.
bool convertNested(const PersistableBundle& bundle, const String16& key, Json::Value& json) {
    PersistableBundle nested;
    return bundle.getPersistableBundle(key, &nested) && convertBundleToJson(nested, json);
}

/// The names of the members that an object had before anything was written to it, ascending as jsoncpp keeps them. The
/// views last: jsoncpp leaves a member's name where it is when other members are added or its value is replaced.
class MemberNames {
public:
    explicit MemberNames(const Json::Value& object) {
        names_.reserve(object.size());
        for (auto member = object.begin(); member != object.end(); ++member) {
            const char* end = nullptr;
            const char* begin = member.memberName(&end);
            names_.emplace_back(begin, static_cast<size_t>(end - begin));
        }
    }

    bool contains(std::string_view name) const { return std::binary_search(names_.begin(), names_.end(), name); }

private:
    std::vector<std::string_view> names_;
};

/// Writes the values of one type, except those whose member stood there before: it wins.
template <typename T>
bool convertMembers(const PersistableBundle& bundle, const Keys& keys, Getter<T> get, const MemberNames& earlier,
                    Json::Value& json) {
    std::string name;
    for (const String16& key : keys) {
        toUtf8(key, name);
        if (earlier.contains(name)) continue;
        T value{};
        if (!(bundle.*get)(key, &value) || !isConvertible(value)) return false;
        json[name] = toJson(value);
    }
    return true;
}

bool convertObject(const PersistableBundle& bundle, Json::Value& json) {
    if (!json.isObject() && !json.isNull()) return false;
    if (bundle.empty()) return true;

    const MemberNames earlier(json);
    const bool scalarsConverted =
        convertMembers<bool>(bundle, bundle.getBooleanKeys(), &PersistableBundle::getBoolean, earlier, json) &&
        convertMembers<int32_t>(bundle, bundle.getIntKeys(), &PersistableBundle::getInt, earlier, json) &&
        convertMembers<int64_t>(bundle, bundle.getLongKeys(), &PersistableBundle::getLong, earlier, json) &&
        convertMembers<double>(bundle, bundle.getDoubleKeys(), &PersistableBundle::getDouble, earlier, json) &&
        convertMembers<String16>(bundle, bundle.getStringKeys(), &PersistableBundle::getString, earlier, json) &&
        convertMembers<std::vector<String16>>(bundle, bundle.getStringVectorKeys(), &PersistableBundle::getStringVector,
                                              earlier, json);
    if (!scalarsConverted) return false;

    // Deliberate: nested bundles are merged whatever was there before. An earlier member that is no object therefore
    // fails the call, and an empty nested bundle leaves null.
    std::string name;
    for (const String16& key : bundle.getPersistableBundleKeys()) {
        toUtf8(key, name);
        if (!convertNested(bundle, key, json[name])) return false;
    }
    return true;
}

/// The keys of the types that an array may hold. Deliberate: string vectors are not among them, an array drops them.
struct ElementKeys {
    explicit ElementKeys(const PersistableBundle& bundle)
        : booleans(bundle.getBooleanKeys()),
          ints(bundle.getIntKeys()),
          longs(bundle.getLongKeys()),
          doubles(bundle.getDoubleKeys()),
          strings(bundle.getStringKeys()),
          bundles(bundle.getPersistableBundleKeys()) {}

    size_t count() const {
        return booleans.size() + ints.size() + longs.size() + doubles.size() + strings.size() + bundles.size();
    }

    Keys united() const {
        Keys all = booleans;
        for (const Keys* keys : {&ints, &longs, &doubles, &strings, &bundles}) all.insert(keys->begin(), keys->end());
        return all;
    }

    const Keys booleans;
    const Keys ints;
    const Keys longs;
    const Keys doubles;
    const Keys strings;
    const Keys bundles;
};

bool convertElement(const PersistableBundle& bundle, const ElementKeys& keys, const String16& key, Json::Value& json) {
    if (keys.booleans.count(key)) return convertValue<bool>(bundle, &PersistableBundle::getBoolean, key, json);
    if (keys.ints.count(key)) return convertValue<int32_t>(bundle, &PersistableBundle::getInt, key, json);
    if (keys.longs.count(key)) return convertValue<int64_t>(bundle, &PersistableBundle::getLong, key, json);
    if (keys.doubles.count(key)) return convertValue<double>(bundle, &PersistableBundle::getDouble, key, json);
    if (keys.strings.count(key)) return convertValue<String16>(bundle, &PersistableBundle::getString, key, json);
    if (keys.bundles.count(key)) return convertNested(bundle, key, json);
    return false;
}

bool convertArray(const PersistableBundle& bundle, Json::Value& json) {
    if (!json.isNull()) return false;

    const ElementKeys keys(bundle);
    const size_t count = keys.united().size();
    if (count != keys.count()) return false;  // a key of two types

    // Deliberate: an array that fails below keeps this size, with nulls where elements were not reached.
    json.resize(static_cast<Json::ArrayIndex>(count));
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        if (!convertElement(bundle, keys, String16(std::to_string(i).c_str()), json[i])) return false;
    }
    return true;
}

template <typename T>
bool holds(const PersistableBundle& bundle, Getter<T> get, const String16& key) {
    T ignored{};
    return (bundle.*get)(key, &ignored);
}

}  // namespace

const String16& arrayMarker() {
    static const String16& key = *new String16("utl_array_of_bundles");
    return key;
}

bool hasArrayMarker(const PersistableBundle& bundle) {
    const String16& key = arrayMarker();
    return holds<bool>(bundle, &PersistableBundle::getBoolean, key) ||
           holds<int32_t>(bundle, &PersistableBundle::getInt, key) ||
           holds<int64_t>(bundle, &PersistableBundle::getLong, key) ||
           holds<double>(bundle, &PersistableBundle::getDouble, key) ||
           holds<String16>(bundle, &PersistableBundle::getString, key) ||
           holds<std::vector<bool>>(bundle, &PersistableBundle::getBooleanVector, key) ||
           holds<std::vector<int32_t>>(bundle, &PersistableBundle::getIntVector, key) ||
           holds<std::vector<int64_t>>(bundle, &PersistableBundle::getLongVector, key) ||
           holds<std::vector<double>>(bundle, &PersistableBundle::getDoubleVector, key) ||
           holds<std::vector<String16>>(bundle, &PersistableBundle::getStringVector, key) ||
           holds<PersistableBundle>(bundle, &PersistableBundle::getPersistableBundle, key);
}

bool convertBundleToJson(PersistableBundle& bundle, Json::Value& json) {
    const bool isArray = bundle.erase(arrayMarker()) > 0;
    return isArray ? convertArray(bundle, json) : convertObject(bundle, json);
}

Json::Value getScalarValueFromBundle(const PersistableBundle& bundle, const std::string& key) {
    const String16 key16 = toString16(key.c_str());
    if (bool value = false; bundle.getBoolean(key16, &value)) return toJson(value);
    if (int32_t value = 0; bundle.getInt(key16, &value)) return toJson(value);
    if (int64_t value = 0; bundle.getLong(key16, &value)) return toJson(value);
    if (double value = 0; bundle.getDouble(key16, &value)) return toJson(value);
    if (String16 value; bundle.getString(key16, &value)) return toJson(value);
    return Json::Value();
}

bool isStrNumber(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace Velo::OS::Telemetry
