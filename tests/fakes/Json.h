#pragma once

#include <gtest/gtest.h>
#include <json/value.h>
#include <json/writer.h>

#include <string>

#include "telemetry/JsonToBundle.h"

namespace Velo::OS::Telemetry::fakes {

/// The value of a text that a test gives.
inline Json::Value parsed(const std::string& text) {
    Json::Value value;
    EXPECT_TRUE(getJsonFromString(text.c_str(), value)) << text;
    return value;
}

/// The value as the library is to write it: jsoncpp's defaults on a single line.
inline std::string text(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

}  // namespace Velo::OS::Telemetry::fakes
