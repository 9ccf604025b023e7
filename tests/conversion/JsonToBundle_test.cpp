#include "telemetry/JsonToBundle.h"

#include <gtest/gtest.h>

#include <string>

#include "telemetry/BundleToJson.h"
#include "tests/fakes/BundleOf.h"
#include "tests/fakes/Json.h"

namespace Velo::OS::Telemetry {

using fakes::arrayOf;
using fakes::BundleOf;
using fakes::parsed;
using fakes::text;

TEST(JsonToBundle, StoresEveryKind) {
    const struct {
        const char* json;
        BundleOf expected;
    } cases[] = {
        {"null", BundleOf()},
        {"true", BundleOf().with("k", true)},
        {"5", BundleOf().with("k", 5.0)},
        {"-1099511627776", BundleOf().with("k", -1099511627776.0)},
        {"18446744073709551615", BundleOf().with("k", 18446744073709551616.0)},
        {"0.5", BundleOf().with("k", 0.5)},
        {R"("t\u00e9\u0000xt")", BundleOf().with("k", "t\xC3\xA9")},
        {"{}", BundleOf().with("k", BundleOf())},
        {"[]", BundleOf().with("k", arrayOf())},
        {R"([true,"x",{"a":1}])",
         BundleOf().with("k", arrayOf().with("0", true).with("1", "x").with("2", BundleOf().with("a", 1.0)))},
        {"[1,null,2]", BundleOf().with("k", arrayOf().with("0", 1.0).with("2", 2.0))},
        {R"({"a":null,"b":false})", BundleOf().with("k", BundleOf().with("b", false))},
    };
    for (const auto& c : cases) {
        android::os::PersistableBundle bundle;
        EXPECT_TRUE(convertJsonToBundle("k", parsed(c.json), bundle)) << c.json;
        EXPECT_TRUE(bundle == c.expected) << c.json;
    }
}

TEST(JsonToBundle, TheReaderOfBundlesGetsTheSameShapeBack) {
    const char* const json = R"({"k":{"a":[true,"x",{"b":[[],{"c":1.5}]}],"d":{"e":"f"}}})";
    android::os::PersistableBundle bundle;
    EXPECT_TRUE(convertJsonToBundle("k", parsed(json)["k"], bundle));
    Json::Value back;
    EXPECT_TRUE(convertBundleToJson(bundle, back));
    EXPECT_EQ(text(back), json);
}

TEST(JsonToBundle, ParsesOrReturnsFalse) {
    const std::string tooDeep(1001, '[');
    for (const char* bad : {"", "{", "{]", "\"", "{\"a\" 1}", "\r", tooDeep.c_str()}) {
        Json::Value out;
        EXPECT_FALSE(getJsonFromString(bad, out)) << bad;
        EXPECT_TRUE(getJsonFromString(R"({"a":1})", out)) << "after " << bad;
        EXPECT_EQ(out["a"].asInt(), 1);
    }
    Json::Value lenient;
    EXPECT_TRUE(getJsonFromString("[1,2] // trailing text is not an error", lenient));
    EXPECT_EQ(lenient.size(), 2U);
}

}  // namespace Velo::OS::Telemetry
