// Bundles of all types, to JSON and back.

#include <utils/String8.h>

#include <set>

#include "fuzz/BundleText.h"
#include "fuzz/JsonProperties.h"

namespace {

using namespace Velo::OS::Telemetry;
using android::String16;
using Bundle = android::os::PersistableBundle;

const String16& marker() {
    static const String16 key("utl_array_of_bundles");
    return key;
}

std::string utf8(const String16& text) { return android::String8(text).c_str(); }

// The conversion as its documentation reads, with no thought of speed.

bool plainlyConverted(Bundle bundle, Json::Value& json);

template <typename T, typename Convert>
bool convertEach(const Bundle& bundle, const std::set<String16>& keys, bool (Bundle::*get)(const String16&, T*) const,
                 const std::set<std::string>& earlier, Json::Value& json, const Convert& convert) {
    for (const String16& key : keys) {
        if (earlier.count(utf8(key))) continue;
        T value{};
        if (!(bundle.*get)(key, &value) || !convert(value, json[utf8(key)])) return false;
    }
    return true;
}

bool plainObject(const Bundle& bundle, Json::Value& json) {
    if (!json.isNull() && !json.isObject()) return false;
    const auto names = json.getMemberNames();
    const std::set<std::string> earlier(names.begin(), names.end());
    const auto plain = [](auto value, Json::Value& to) { return to = value, true; };
    const auto integer = [](int64_t value, Json::Value& to) { return to = Json::Int64{value}, true; };
    const auto real = [](double value, Json::Value& to) { return to = value, std::isfinite(value); };
    const auto text = [](const String16& value, Json::Value& to) { return to = utf8(value), true; };
    const auto texts = [](const std::vector<String16>& value, Json::Value& to) {
        to = Json::Value(Json::arrayValue);
        for (const String16& each : value) to.append(utf8(each));
        return true;
    };
    return convertEach(bundle, bundle.getBooleanKeys(), &Bundle::getBoolean, earlier, json, plain) &&
           convertEach(bundle, bundle.getIntKeys(), &Bundle::getInt, earlier, json, integer) &&
           convertEach(bundle, bundle.getLongKeys(), &Bundle::getLong, earlier, json, integer) &&
           convertEach(bundle, bundle.getDoubleKeys(), &Bundle::getDouble, earlier, json, real) &&
           convertEach(bundle, bundle.getStringKeys(), &Bundle::getString, earlier, json, text) &&
           convertEach(bundle, bundle.getStringVectorKeys(), &Bundle::getStringVector, earlier, json, texts) &&
           convertEach(bundle, bundle.getPersistableBundleKeys(), &Bundle::getPersistableBundle, {}, json,
                       plainlyConverted);
}

bool plainArray(Bundle bundle, Json::Value& json) {
    if (!json.isNull()) return false;
    for (const auto& vectors : {bundle.getBooleanVectorKeys(), bundle.getIntVectorKeys(), bundle.getLongVectorKeys(),
                                bundle.getDoubleVectorKeys(), bundle.getStringVectorKeys()}) {
        for (const String16& key : vectors) bundle.erase(key);
    }
    Json::Value elements;
    if (!plainObject(bundle, elements) || elements.size() != bundle.size()) return false;
    json = Json::Value(Json::arrayValue);
    for (size_t i = 0; i < bundle.size(); ++i) {
        if (!elements.isMember(std::to_string(i))) return false;
        json.append(elements[std::to_string(i)]);
    }
    return true;
}

bool plainlyConverted(Bundle bundle, Json::Value& json) {
    return bundle.erase(marker()) > 0 ? plainArray(bundle, json) : plainObject(bundle, json);
}

/// A NaN is unequal to itself, and so is every bundle that one is in.
bool holdsNaN(const Bundle& bundle) {
    const Bundle& same = bundle;
    return !(bundle == same);
}

/// Each scalar, asked for by its key, is what the conversion made of it.
void requireScalarsAgree(const Bundle& bundle, const Json::Value& json) {
    for (const auto& keys : {bundle.getBooleanKeys(), bundle.getIntKeys(), bundle.getLongKeys(), bundle.getDoubleKeys(),
                             bundle.getStringKeys()}) {
        for (const String16& key : keys) {
            const std::string name = utf8(key);
            if (String16(name.c_str()) != key) continue;  // it ends at a NUL, or half of a surrogate pair is in it
            fuzz::requireEqual(fuzz::jsoncppText(getScalarValueFromBundle(bundle, name)), fuzz::jsoncppText(json[name]),
                               "A scalar asked for is the one converted");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const Bundle bundle = fuzz::BundleText(text).read();
    Bundle given(bundle);
    Bundle withoutMarker(bundle);
    const bool isArray = withoutMarker.erase(marker()) > 0;
    Json::Value json;
    Json::Value expected;
    const bool isConverted = convertBundleToJson(given, json);

    fuzz::require(given.size() == withoutMarker.size() && (holdsNaN(bundle) || given == withoutMarker),
                  "Only the marker is taken out of the bundle");
    fuzz::require(isConverted == plainlyConverted(bundle, expected), "The conversion fails where it is to fail");
    if (!isConverted) return 0;
    fuzz::requireEqual(fuzz::jsoncppText(json), fuzz::jsoncppText(expected), "The conversion gives what it is to give");
    if (!isArray && !fuzz::mayHoldNul(text)) requireScalarsAgree(bundle, json);
    fuzz::requireWrittenLikeJsoncpp(json);
    fuzz::requireSurvivesBundle(json);
    return 0;
}
