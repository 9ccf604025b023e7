#include "telemetry/BundleToJson.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

#include "conversion/ArrayMarker.h"
#include "conversion/Immortal.h"
#include "conversion/JsonMember.h"
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

bool convertBundle(PersistableBundle& bundle, Json::Value& json, unsigned depth);

/// Merges the nested bundle into `json`. `depth` counts the bundles that stand around it; the outermost is the
/// caller's and keeps what it holds.
bool convertNested(PersistableBundle& bundle, const String16& key, Json::Value& json, unsigned depth) {
    if (depth >= kMaxNesting) return false;
    // Not on the stack, of which the maps of a bundle would take half a kilobyte at each level.
    const auto nested = std::make_unique<PersistableBundle>();
    if (!bundle.getPersistableBundle(key, nested.get())) return false;
    // Copies that hold copies would take memory by the square of the depth.
    if (depth > 1) bundle.erase(key);
    return convertBundle(*nested, json, depth + 1);
}

/// The names of the members that an object had before anything was written to it, ascending as jsoncpp keeps them. The
/// views last: jsoncpp leaves a member's name where it is when other members are added or its value is replaced.
class MemberNames {
public:
    explicit MemberNames(const Json::Value& object) {
        names_.reserve(object.size());
        for (auto member = object.begin(); member != object.end(); ++member) names_.push_back(nameOf(member));
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
        json[name] = toJson(value);  // moved once more, as convertValue would, it costs 5 %
    }
    return true;
}

/// All but the nested bundles. Not inlined: nested bundles are converted by recursion, and the sets of keys would stand
/// on the stack at each level.
[[gnu::noinline]] bool convertFlatMembers(const PersistableBundle& bundle, Json::Value& json, unsigned depth) {
    const Keys vectorKeys = bundle.getStringVectorKeys();
    if (depth >= kMaxNesting && !vectorKeys.empty()) return false;  // they become arrays, one level deeper
    const MemberNames earlier(json);
    return convertMembers<bool>(bundle, bundle.getBooleanKeys(), &PersistableBundle::getBoolean, earlier, json) &&
           convertMembers<int32_t>(bundle, bundle.getIntKeys(), &PersistableBundle::getInt, earlier, json) &&
           convertMembers<int64_t>(bundle, bundle.getLongKeys(), &PersistableBundle::getLong, earlier, json) &&
           convertMembers<double>(bundle, bundle.getDoubleKeys(), &PersistableBundle::getDouble, earlier, json) &&
           convertMembers<String16>(bundle, bundle.getStringKeys(), &PersistableBundle::getString, earlier, json) &&
           convertMembers<std::vector<String16>>(bundle, vectorKeys, &PersistableBundle::getStringVector, earlier,
                                                 json);
}

bool convertObject(PersistableBundle& bundle, Json::Value& json, unsigned depth) {
    if (!json.isObject() && !json.isNull()) return false;
    if (bundle.empty()) return true;
    if (!convertFlatMembers(bundle, json, depth)) return false;

    // Deliberate: nested bundles are merged whatever was there before. An earlier member that is no object therefore
    // fails the call, and an empty nested bundle leaves null.
    std::string name;
    for (const String16& key : bundle.getPersistableBundleKeys()) {
        toUtf8(key, name);
        if (!convertNested(bundle, key, json[name], depth)) return false;
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

/// Any but a nested bundle. Not inlined, for the same reason.
[[gnu::noinline]] bool convertFlatElement(const PersistableBundle& bundle, const ElementKeys& keys, const String16& key,
                                          Json::Value& json) {
    if (keys.booleans.count(key)) return convertValue<bool>(bundle, &PersistableBundle::getBoolean, key, json);
    if (keys.ints.count(key)) return convertValue<int32_t>(bundle, &PersistableBundle::getInt, key, json);
    if (keys.longs.count(key)) return convertValue<int64_t>(bundle, &PersistableBundle::getLong, key, json);
    if (keys.doubles.count(key)) return convertValue<double>(bundle, &PersistableBundle::getDouble, key, json);
    if (keys.strings.count(key)) return convertValue<String16>(bundle, &PersistableBundle::getString, key, json);
    return false;
}

bool convertArray(PersistableBundle& bundle, Json::Value& json, unsigned depth) {
    if (!json.isNull()) return false;

    const auto keys = std::make_unique<const ElementKeys>(bundle);  // not on the stack, as above
    const size_t count = keys->united().size();
    if (count != keys->count()) return false;  // a key of two types

    // Deliberate: an array that fails below keeps this size, with nulls where elements were not reached.
    json.resize(static_cast<Json::ArrayIndex>(count));
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        const String16 key(std::to_string(i).c_str());
        const bool isConverted = keys->bundles.count(key) ? convertNested(bundle, key, json[i], depth)
                                                          : convertFlatElement(bundle, *keys, key, json[i]);
        if (!isConverted) return false;
    }
    return true;
}

bool convertBundle(PersistableBundle& bundle, Json::Value& json, unsigned depth) {
    const bool isArray = bundle.erase(arrayMarker()) > 0;
    return isArray ? convertArray(bundle, json, depth) : convertObject(bundle, json, depth);
}

template <typename T>
bool holds(const PersistableBundle& bundle, Getter<T> get, const String16& key) {
    T ignored{};
    return (bundle.*get)(key, &ignored);
}

}  // namespace

const String16& arrayMarker() {
    static const String16& key = immortal<String16>("utl_array_of_bundles");
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

bool convertBundleToJson(PersistableBundle& bundle, Json::Value& json) { return convertBundle(bundle, json, 1); }

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
