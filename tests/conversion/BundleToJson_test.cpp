#include "telemetry/BundleToJson.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/fakes/BundleOf.h"
#include "tests/fakes/Json.h"

namespace Velo::OS::Telemetry {

using android::String16;
using android::os::PersistableBundle;
using fakes::arrayOf;
using fakes::BundleOf;
using fakes::parsed;
using fakes::text;

constexpr char kMarker[] = "utl_array_of_bundles";

TEST(BundleToJson, ConvertsOrRefuses) {
    const double infinity = std::numeric_limits<double>::infinity();
    BundleOf members;
    members.with("b", true).with("i", INT32_MIN).with("l", int64_t{1} << 40).with("d", 0.5).with("s", "t\xC3\xA9xt");
    members.with("v", std::vector<const char*>{"x", "", "y"}).with("iv", std::vector<int32_t>{1, 2});
    members.with("o", BundleOf().with("k", 1));
    BundleOf elements = arrayOf();  // eleven: the order of numbers is not that of texts
    elements.with("0", 5).with("1", "a").with("2", false).with("3", int64_t{7}).with("4", 1.5);
    elements.with("5", BundleOf().with("k", 1)).with("6", arrayOf().with("0", "in"));
    elements.with("7", 7).with("8", 8).with("9", 9).with("10", 10);
    struct Case {
        const char* name;
        BundleOf bundle;
        const char* before;    // the JSON that is filled
        const char* expected;  // null: refused
    };
    const Case cases[] = {
        {"AllTypes", members, "null",
         R"({"b":true,"d":0.5,"i":-2147483648,"l":1099511627776,"o":{"k":1},"s":"t\u00e9xt","v":["x","","y"]})"},
        {"EmptyBundleWritesNothing", BundleOf(), "null", "null"},
        {"NestedEmptyBundleLeavesNull", BundleOf().with("o", BundleOf()), "null", R"({"o":null})"},
        {"ObjectIntoScalar", BundleOf(), "5", nullptr},
        {"ObjectIntoArray", BundleOf(), "[]", nullptr},
        {"ExistingScalarWins", BundleOf().with("a", 2).with("c", 3), R"({"a":1,"b":0})", R"({"a":1,"b":0,"c":3})"},
        {"ExistingWinsOverStringVector", BundleOf().with("a", std::vector<const char*>{"x"}), R"({"a":null})",
         R"({"a":null})"},
        {"ExistingNameIsComparedWhole", BundleOf().with("aa", 2), R"({"a":1,"aaa":3})", R"({"a":1,"aa":2,"aaa":3})"},
        {"NestedMergesIntoObject", BundleOf().with("o", BundleOf().with("a", 2).with("b", 3)), R"({"o":{"a":1}})",
         R"({"o":{"a":1,"b":3}})"},
        {"NestedIntoScalar", BundleOf().with("o", BundleOf()), R"({"o":5})", nullptr},
        {"NestedArrayIntoObject", BundleOf().with("o", arrayOf()), R"({"o":{}})", nullptr},
        {"NotANumber", BundleOf().with("d", std::nan("")), "null", nullptr},
        {"NestedInfinity", BundleOf().with("o", BundleOf().with("d", -infinity)), "null", nullptr},
        {"LaterTypeReplacesEarlierOne", BundleOf().with("k", "text").withSecondType("k", true), "{}",
         R"({"k":"text"})"},
        {"NestedAfterScalarOfTheSameKey", BundleOf().with("k", BundleOf()).withSecondType("k", true), "{}", nullptr},

        {"EmptyArray", arrayOf(), "null", "[]"},
        {"MarkerOfAnotherType", BundleOf().with(kMarker, "x").with("0", 1), "null", "[1]"},
        {"ArrayOfAllTypes", elements, "null", R"([5,"a",false,7,1.5,{"k":1},["in"],7,8,9,10])"},
        {"ArrayDropsStringVectors", arrayOf().with("0", 5).with("1", std::vector<const char*>{"x"}), "null", "[5]"},
        {"ArrayWithGap", arrayOf().with("0", 5).with("2", 6), "null", nullptr},
        {"ArrayWithOtherKey", arrayOf().with("0", 5).with("x", 6), "null", nullptr},
        {"ArrayWithPaddedIndex", arrayOf().with("00", 5), "null", nullptr},
        {"ArrayWithKeyOfTwoTypes", arrayOf().with("0", 5).withSecondType("0", true), "null", nullptr},
        {"ArrayWithInfinity", arrayOf().with("0", infinity), "null", nullptr},
        {"ArrayWithBadElement", arrayOf().with("0", arrayOf().with("1", 1)), "null", nullptr},
        {"ArrayIntoObject", arrayOf(), "{}", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PersistableBundle bundle = c.bundle;
        Json::Value json = parsed(c.before);
        const bool converted = convertBundleToJson(bundle, json);
        EXPECT_EQ(converted, c.expected != nullptr);
        EXPECT_EQ(converted ? text(json) : "", c.expected ? c.expected : "");
        EXPECT_EQ(bundle.erase(String16(kMarker)), 0U) << "the marker is taken out of the caller's bundle";
    }
}

TEST(BundleToJson, KeepsWhatWasWrittenBeforeAFailure) {
    BundleOf object = BundleOf().with("b", true).with("d", std::nan("")).with("s", "later type");
    Json::Value json;
    EXPECT_FALSE(convertBundleToJson(object, json));
    EXPECT_EQ(text(json), R"({"b":true})");

    BundleOf array = arrayOf().with("0", 5).with("2", 6).with("3", 7);
    Json::Value elements;
    EXPECT_FALSE(convertBundleToJson(array, elements));
    EXPECT_EQ(text(elements), "[5,null,null]");
}

TEST(BundleToJson, TextsAndKeysEndAtTheFirstNul) {
    PersistableBundle bundle;
    bundle.putString(String16(u"k\0x", 3), String16(u"a\0b", 3));
    Json::Value json;
    EXPECT_TRUE(convertBundleToJson(bundle, json));
    EXPECT_EQ(text(json), R"({"k":"a"})");
}

TEST(BundleToJson, ReadsOneScalar) {
    const BundleOf bundle = BundleOf()
                                .with("b", false)
                                .with("i", -1)
                                .with("l", INT64_MAX)
                                .with("d", 0.5)
                                .with("s", "\xE2\x82\xAC")
                                .with("v", std::vector<const char*>{"x"})
                                .with("o", BundleOf())
                                .with("two", 1)
                                .withSecondType("two", true);
    const struct {
        const char* key;
        const char* expected;
    } cases[] = {{"b", "false"}, {"i", "-1"},   {"l", "9223372036854775807"}, {"d", "0.5"},   {"s", R"("\u20ac")"},
                 {"v", "null"},  {"o", "null"}, {"absent", "null"},           {"two", "true"}};
    for (const auto& c : cases) EXPECT_EQ(text(getScalarValueFromBundle(bundle, c.key)), c.expected) << c.key;

    const Json::Value notFinite = getScalarValueFromBundle(BundleOf().with("d", std::nan("")), "d");
    EXPECT_TRUE(notFinite.isDouble() && std::isnan(notFinite.asDouble()));
}

TEST(BundleToJson, NumberTextsAreDigitsAlone) {
    for (const char* number : {"0", "0042", "99999999999999999999"}) EXPECT_TRUE(isStrNumber(number)) << number;
    for (const char* other : {"", "-1", "1.5", " 1", "1 ", "0x1", "/", ":", "\xD9\xA1"}) {
        EXPECT_FALSE(isStrNumber(other)) << other;
    }
}

}  // namespace Velo::OS::Telemetry
