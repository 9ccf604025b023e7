#include <gtest/gtest.h>
#include <utils/String8.h>

#include <cmath>
#include <random>

#include "conversion/PlatformText.h"
#include "telemetry/BundleToJson.h"
#include "telemetry/JsonToBundle.h"
#include "tests/fakes/Payloads.h"
#include "tests/fakes/SmallStack.h"

namespace Velo::OS::Telemetry {

using android::String16;
using fakes::Bundle;
using fakes::bundleOf;
using fakes::parsed;
using fakes::text;

const String16 kMarker("utl_array_of_bundles");

/// What becomes of the JSON `before`: its text, or "refused".
std::string converted(Bundle bundle, const char* before = "null") {
    Json::Value json = parsed(before);
    Bundle given = bundle;
    given.erase(kMarker);
    const bool isConverted = convertBundleToJson(bundle, json);
    EXPECT_EQ(bundle.size(), given.size()) << "nothing else is taken out of the caller's bundle";
    EXPECT_EQ(bundle.erase(kMarker), 0U) << "the marker is taken out of the caller's bundle";
    return isConverted ? text(json) : "refused";
}

TEST(BundleToJson, Objects) {
    const char* const all =
        R"({"b":true,"d":0.5,"i":-2147483648,"l":1099511627776,"o":{"k":1},"s":"\u00e9","v":["x",""]})";
    const struct {
        const char *bundle, *before, *expected;
    } cases[] = {
        {all, "null", all},
        {"{}", "null", "null"},
        {R"({"o":{}})", "null", R"({"o":null})"},
        {"{}", "5", "refused"},
        {"{}", "[]", "refused"},
        {R"({"a":2,"c":3})", R"({"a":1,"b":0})", R"({"a":1,"b":0,"c":3})"},
        {R"({"a":["x"]})", R"({"a":null})", R"({"a":null})"},
        {R"({"aa":2})", R"({"a":1,"aaa":3})", R"({"a":1,"aa":2,"aaa":3})"},
        {R"({"o":{"a":2,"b":3}})", R"({"o":{"a":1}})", R"({"o":{"a":1,"b":3}})"},
        {R"({"o":{}})", R"({"o":5})", "refused"},
        {R"({"o":{"utl_array_of_bundles":true}})", R"({"o":{}})", "refused"},
        {R"({"d":NaN})", "null", "refused"},
        {R"({"o":{"d":-Infinity}})", "null", "refused"},
    };
    for (const auto& c : cases) EXPECT_EQ(converted(bundleOf(c.bundle), c.before), c.expected) << c.bundle << c.before;
    Bundle bundle;
    bundle.putIntVector(String16("left out"), {1});
    bundle.putString(String16(u"k\0x", 3), String16(u"ends\0here", 9));
    EXPECT_EQ(converted(bundle), R"({"k":"ends"})");
    bundle.putString(String16(u"k\xD800"), String16(u"\xDC00lone\xD800"));
    EXPECT_EQ(converted(bundle), R"({"k":"lone"})") << "keys that become the same: the last one wins";
}

TEST(BundleToJson, Arrays) {
    const struct {
        const char *elements, *expected;
    } cases[] = {
        {"", "[]"},
        // Eleven: the order of numbers is not that of texts.
        {R"("0":5,"1":"a","2":false,"3":4294967296,"4":1.5,"5":{"k":1},"6":{"utl_array_of_bundles":1,"0":"in"},"7":7,"8":8,
            "9":9,"10":10,)",
         R"([5,"a",false,4294967296,1.5,{"k":1},["in"],7,8,9,10])"},
        {R"("0":5,"1":["dropped"],)", "[5]"},
        {R"("0":5,"2":6,)", "refused"},
        {R"("0":5,"x":6,)", "refused"},
        {R"("00":5,)", "refused"},
        {R"("0":Infinity,)", "refused"},
        {R"("0":{"utl_array_of_bundles":true,"1":1},)", "refused"},
    };
    for (const auto& c : cases) {
        for (const char* marker : {"true", "1", "4294967296", "0.5", R"("x")", R"(["x"])", "{}"}) {
            const std::string object = "{" + std::string(c.elements) + R"("utl_array_of_bundles":)" + marker + "}";
            EXPECT_EQ(converted(bundleOf(object)), c.expected) << object;
        }
    }
    EXPECT_EQ(converted(bundleOf(R"({"utl_array_of_bundles":true})"), "{}"), "refused");
}

TEST(BundleToJson, ReadsOneScalar) {
    const char* const object =
        R"({"b":false,"d":0.5,"i":-1,"l":9223372036854775807,"o":{"k":1},"s":"\u20ac","v":["x"]})";
    const Bundle bundle = bundleOf(object);
    for (const char* key : {"b", "d", "i", "l", "s"}) {
        EXPECT_EQ(text(getScalarValueFromBundle(bundle, key)), text(parsed(object)[key])) << key;
    }
    for (const char* key : {"o", "v", ""}) EXPECT_TRUE(getScalarValueFromBundle(bundle, key).isNull()) << key;
    EXPECT_TRUE(std::isinf(getScalarValueFromBundle(bundleOf(R"({"d":Infinity})"), "d").asDouble()));
}

TEST(BundleToJson, NumberTextsAreDigitsAlone) {
    for (const char* number : {"0", "0042", "99999999999999999999"}) EXPECT_TRUE(isStrNumber(number)) << number;
    for (const char* other : {"", "-1", "1.5", " 1", "1 ", "/", ":"}) EXPECT_FALSE(isStrNumber(other)) << other;
}

TEST(JsonToBundle, StoresEveryKind) {
    const std::pair<const char*, const char*> cases[] = {
        {"null", "{}"},
        {"true", R"({"k":true})"},
        {"5", R"({"k":5.0})"},
        {"-1099511627776", R"({"k":-1099511627776.0})"},
        {"18446744073709551615", R"({"k":18446744073709551616.0})"},
        {R"("t\u00e9\u0000xt")", R"({"k":"t\u00e9"})"},
        {"{}", R"({"k":{}})"},
        {R"({"a":null,"b":false})", R"({"k":{"b":false}})"},
        {R"([true,null,"x",[],{"a":1}])", R"({"k":{"utl_array_of_bundles":true,"0":true,"2":"x",
            "3":{"utl_array_of_bundles":true},"4":{"a":1.0}}})"},
    };
    for (const auto& [json, expected] : cases) {
        Bundle bundle;
        EXPECT_TRUE(convertJsonToBundle("k", parsed(json), bundle)) << json;
        EXPECT_TRUE(bundle == bundleOf(expected)) << json;
    }
    Bundle bundle;
    EXPECT_TRUE(convertJsonToBundle("k", parsed(R"([true,[],{"a":["x",{}]},{"d":0.5}])"), bundle));
    EXPECT_EQ(converted(bundle), R"({"k":[true,[],{"a":["x",null]},{"d":0.5}]})") << "an empty bundle reads as null";
}

TEST(PlatformText, IsThatOfThePlatform) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        // Odd ones are rare, so that they stand anywhere in a text, whatever its length, or nowhere.
        const auto oddOr = [&](auto plain) {
            const auto odd = random() % 2 ? random() : 0xD7FE + random() % 0x804;
            return random() % 40 ? plain : static_cast<decltype(plain)>(odd);
        };
        std::u16string units(random() % 130, u'a');
        for (char16_t& unit : units) unit = oddOr(unit);
        const String16 wide(units.data(), units.size());
        std::string narrow = "replaced";
        toUtf8(wide, narrow);
        ASSERT_EQ(narrow, android::String8(wide).c_str());

        std::string bytes(random() % 130, 'a');
        for (char& byte : bytes) byte = oddOr(byte);
        ASSERT_EQ(toString16(bytes.c_str()), String16(bytes.c_str()));
    }
}

TEST(JsonToBundle, ParsesOrReturnsFalse) {
    for (const std::string& bad : {std::string(), std::string("{]"), std::string("\r"), std::string(1001, '[')}) {
        Json::Value out;
        EXPECT_FALSE(getJsonFromString(bad.c_str(), out)) << bad;
        EXPECT_TRUE(getJsonFromString("[1] trailing text is no error", out) && text(out) == "[1]") << "after " << bad;
    }
}

TEST(Nesting, IsConvertedBothWaysUpToTheLimitAndRefusedBeyond) {
    fakes::onSmallStack([] {
        Bundle bundle, outer, none, withVector;
        Json::Value json;
        ASSERT_TRUE(convertJsonToBundle("k", fakes::nested(kMaxNesting - 1), bundle));
        outer.putPersistableBundle(String16("k"), bundle);
        EXPECT_TRUE(convertBundleToJson(bundle, json));
        EXPECT_TRUE(json["k"] == fakes::nested(kMaxNesting - 1));
        EXPECT_FALSE(convertBundleToJson(outer, json = Json::Value())) << "one level more";
        EXPECT_FALSE(convertJsonToBundle("k", fakes::nested(kMaxNesting), none) || !none.empty());

        withVector.putStringVector(String16("v"), {String16("an array, one level more")});
        for (unsigned depth = 1; depth < kMaxNesting; ++depth) {
            const Bundle inner = withVector;
            withVector = Bundle();
            withVector.putPersistableBundle(String16("k"), inner);
        }
        EXPECT_FALSE(convertBundleToJson(withVector, json = Json::Value()));
    });
}

}  // namespace Velo::OS::Telemetry
