#pragma once

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Property.h"
#include "replay/Utf8.h"
#include "telemetry/BundleToJson.h"
#include "telemetry/JsonToBundle.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::fuzz {

/// The text that the library's own writer is to give to the byte.
inline std::string jsoncppText(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

/// By jsoncpp's default reader; none if it refuses, or gives up at a thousand levels.
inline std::optional<Json::Value> jsoncppValue(std::string_view text) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value value;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &value, nullptr)) return value;
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

/// Levels of arrays and objects.
inline unsigned depthOf(const Json::Value& value) {
    unsigned deepest = 0;
    for (const Json::Value& child : value) deepest = std::max(deepest, depthOf(child));
    return value.isArray() || value.isObject() ? deepest + 1 : 0;
}

/// Whether a bundle can hold all texts and names of the value as they are.
inline bool hasPlainTexts(const Json::Value& value) {
    const auto isPlain = [](const std::string& text) {
        return text.find('\0') == std::string::npos && text != "utl_array_of_bundles" &&
               replay::findMalformedUtf8(text) == text.size();
    };
    if (value.isString()) return isPlain(value.asString());
    for (auto child = value.begin(); child != value.end(); ++child) {
        if (value.isObject() && !isPlain(child.name())) return false;
        if (!hasPlainTexts(*child)) return false;
    }
    return true;
}

/// Whether the value, or one within it, has a comment: jsoncpp's reader keeps them, and its writer writes them.
inline bool hasComments(const Json::Value& value) {
    for (const auto place : {Json::commentBefore, Json::commentAfterOnSameLine, Json::commentAfter}) {
        if (value.hasComment(place)) return true;
    }
    return std::any_of(value.begin(), value.end(), hasComments);
}

/// A comment may have swallowed what follows it. What is no UTF-8 is replaced, which may change the order of names or
/// make two of them one.
inline void requireReadsBack(const std::string& text, const Json::Value& value) {
    if (hasComments(value)) return;
    const std::optional<Json::Value> read = jsoncppValue(text);
    require(read.has_value(), "What is written can be read", text);
    if (hasPlainTexts(value)) requireEqual(jsoncppText(*read), text, "What is read is written as the same text");
}

/// What a bundle gives back of the value, which is not null; nullopt if it cannot be read. Nulls are not stored: an
/// array may only end in them. Numbers come back as doubles, and an object of which nothing was stored as null.
inline std::optional<Json::Value> keptByBundle(const Json::Value& value) {
    if (value.isNumeric()) return std::isfinite(value.asDouble()) ? std::optional(value.asDouble()) : std::nullopt;
    if (!value.isArray() && !value.isObject()) return value;
    Json::Value kept(value.isArray() ? Json::arrayValue : Json::nullValue);
    bool isGap = false;
    for (auto child = value.begin(); child != value.end(); ++child) {
        if (child->isNull()) {
            isGap = true;
            continue;
        }
        const std::optional<Json::Value> keptChild = keptByBundle(*child);
        if (!keptChild || (value.isArray() && isGap)) return std::nullopt;
        value.isArray() ? kept.append(*keptChild) : kept[child.name()] = *keptChild;
    }
    return kept;
}

inline void requireSurvivesBundle(const Json::Value& value) {
    android::os::PersistableBundle bundle;
    require(convertJsonToBundle("k", value, bundle), "Every value can be stored");
    Json::Value back;
    const bool isRead = convertBundleToJson(bundle, back);
    if (value.isNull() || !hasPlainTexts(value)) return;
    const std::optional<Json::Value> expected = keptByBundle(value);
    require(isRead == expected.has_value(), "What was stored can be read unless an array has a gap",
            jsoncppText(value));
    // Compared as values, which leaves comments aside.
    if (expected) require(back["k"] == *expected, "What was stored is read back", jsoncppText(back["k"]));
}

/// An event with the value in its data is written as jsoncpp would write it.
inline void requireWrittenLikeJsoncpp(const Json::Value& value) {
    Json::Value data;
    data["value"] = value;
    Json::Value expected(data);
    expected["realtime"] = false;
    TelemetryEventBundle event("e", std::move(data), 1000, IntakeFormat::JsonBundle);
    const std::string text = event.getJsonString();
    requireEqual(text, jsoncppText(expected), "An event is written as jsoncpp would write it");
    requireReadsBack(text, expected);
}

}  // namespace Velo::OS::Telemetry::fuzz
