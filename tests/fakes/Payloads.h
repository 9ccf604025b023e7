#pragma once

#include <binder/PersistableBundle.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Velo::OS::Telemetry::fakes {

using Bundle = android::os::PersistableBundle;

/// The value of a text; NaN and Infinity are numbers in it.
inline Json::Value parsed(const std::string& text) {
    Json::CharReaderBuilder builder;
    builder["allowSpecialFloats"] = true;
    Json::Value value;
    std::istringstream stream(text);
    EXPECT_TRUE(Json::parseFromStream(builder, stream, &value, nullptr)) << text;
    return value;
}

/// The value as the library is to write it: jsoncpp's defaults on a single line.
inline std::string text(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

/// Arrays and objects by turns inside one another, an object outermost; made and passed on without recursion.
inline Json::Value nested(unsigned depth) {
    Json::Value value(true);
    for (; depth > 0; --depth) {
        Json::Value inner = std::exchange(value, Json::Value());
        (depth % 2 == 0 ? value[0U] : value["k"]) = std::move(inner);
    }
    return value;
}

/// A bundle with the members of an object: bools, ints, longs beyond 32 bits, doubles, strings, string vectors (arrays)
/// and nested bundles.
inline Bundle toBundle(const Json::Value& object) {
    Bundle bundle;
    for (const std::string& name : object.getMemberNames()) {
        const android::String16 key(name.c_str());
        const Json::Value& value = object[name];
        if (value.isBool()) bundle.putBoolean(key, value.asBool());
        if (value.isString()) bundle.putString(key, android::String16(value.asCString()));
        if (value.isObject()) bundle.putPersistableBundle(key, toBundle(value));
        if (value.type() == Json::realValue) bundle.putDouble(key, value.asDouble());
        if (value.type() == Json::intValue && value.isInt()) bundle.putInt(key, value.asInt());
        if (value.type() == Json::intValue && !value.isInt()) bundle.putLong(key, value.asInt64());
        if (!value.isArray()) continue;
        std::vector<android::String16> texts;
        for (const Json::Value& item : value) texts.emplace_back(item.asCString());
        bundle.putStringVector(key, texts);
    }
    return bundle;
}

inline Bundle bundleOf(const std::string& object) { return toBundle(parsed(object)); }

}  // namespace Velo::OS::Telemetry::fakes
