#include "telemetry/EventSchemaHandler.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/fakes/FakeStorageCache.h"
#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using Category = IEventSchemaHandler::EventCategory;
using Lines = std::vector<std::string>;

std::string error(const std::string& message) { return "6 telemetry-eventfiltering: " + message; }

class Schema : public testing::Test {
protected:
    std::string& value(const std::string& key, const char* store = "event_schema") {
        return cache->values[{Store::EventSchema, store, key}];
    }

    std::shared_ptr<fakes::FakeStorageCache> cache = std::make_shared<fakes::FakeStorageCache>();
    EventSchemaHandler handler{cache};
    fakes::LogCapture log;
};

TEST_F(Schema, CodesMakeACategory) {
    constexpr int R = 1, K = 2, E = 3, E2 = 4, N = 5;  // for review, with other consent, essential, non-essential
    const std::pair<std::unordered_set<int32_t>, const char*> cases[] = {
        {{}, "UNCATEGORIZED"},  {{R}, "NEEDS_REVIEW"},
        {{R, E}, "INVALID"},    {{R, N, E}, "INVALID"},
        {{K, R}, "INVALID"},    {{E}, "ESSENTIAL"},
        {{E, E2}, "ESSENTIAL"}, {{E, N}, "ESSENTIAL"},
        {{N}, "NON_ESSENTIAL"}, {{99}, "INVALID"},
        {{E, 99}, "INVALID"},   {{N, 99}, "INVALID"},
        {{K, E}, "INVALID"},    {{K}, "NON_ESSENTIAL_WITH_OTHER_CONSENT"},
    };
    for (const auto& [codes, category] : cases) {
        EXPECT_EQ(handler.getCategoryFromCodes(codes, R, K, {E, E2}, {N}), category) << testing::PrintToString(codes);
    }
    EXPECT_EQ(handler.getCategoryFromCodes({K, E}, R, K, {E}, {K}), "ESSENTIAL");
    EXPECT_EQ(handler.getCategoryFromCodes({R, K}, {}, K, {R}, {K}), "ESSENTIAL") << "no code is for review";
    EXPECT_EQ(handler.getCategoryFromCodes({K}, K, K, {}, {}), "NEEDS_REVIEW");
    EXPECT_EQ(handler.getCategoryFromCodes({R, N}, {}, R, {R}, {N}), "ESSENTIAL");
    EXPECT_EQ(handler.getCategoryFromCodes({R}, {}, {}, {E}, {N}), "INVALID");

    const char* const names[] = {"ESSENTIAL",     "NON_ESSENTIAL", "NEEDS_REVIEW",
                                 "UNCATEGORIZED", "INVALID",       "NON_ESSENTIAL_WITH_OTHER_CONSENT"};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(EventSchemaHandler::getEventCategoryStr(Category{i}), names[i]);
        EXPECT_EQ(EventSchemaHandler::getEventCategoryEnum(names[i]), Category{i});
    }
    EXPECT_EQ(EventSchemaHandler::getEventCategoryStr(Category{6}), "INVALID");
    EXPECT_EQ(EventSchemaHandler::getEventCategoryEnum("essential"), Category::Invalid);
}

TEST_F(Schema, NamesAreHashedWithTheSalt) {
    EXPECT_EQ(handler.getHashedEventPurpose("e", "Ads"), "Adse");
    EXPECT_EQ(log.take(), Lines{error("Invalid salt, don't hash event name.")});
    value("salt") = "late";
    EXPECT_EQ(handler.getHashedString("ab"), "ab") << "the empty salt is remembered";
    EXPECT_EQ(log.take().size(), 1U);

    // NIST, FIPS 180-4 examples and CAVP, each split into text and salt.
    const std::tuple<std::string, std::string, const char*> vectors[] = {
        {"ab", "c", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"", "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnop", "nopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(999'999, 'a'), "a", "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
        {"", "\xbd", "68325720aabd7c82f30f554b313d0570c95accbb7dc4b5aae11204c08ffe732b"},
    };
    for (const auto& [text, salt, hash] : vectors) {
        EventSchemaHandler fresh(cache);
        value("salt") = salt;
        EXPECT_EQ(fresh.getHashedEventName(text), hash);
        EXPECT_EQ(fresh.getHashedString(text), hash);
    }
    EXPECT_EQ(log.take(), Lines());
    value("salt") = "c";
    EXPECT_EQ(EventSchemaHandler(cache).getHashedEventPurpose("b", "a"), std::get<2>(vectors[0]));
}

TEST_F(Schema, ATimestampIsReadBackOnlyIfItIsAWholeNumber) {
    const std::tuple<const char*, const char*, uint64_t> cases[] = {
        // in the schema, in the store, read back
        {R"({"timestamp":1234})", "1234", 1234},
        {R"({"timestamp":18446744073709551615})", "18446744073709551615", 18446744073709551615U},
        {R"({"timestamp":18446744073709551616})", "1.8446744073709552e+19", 0},
        {R"({"timestamp":"123"})", "0", 0},
        {R"({"timestamp":1.5})", "1.5", 0},
        {R"({"timestamp":-1})", "-1", 0},
        {R"({"timestamp":null})", "null", 0},
        {R"({"timestamp":[1,{"a":2}]})", R"([1,{"a":2}])", 0},
        {"{}", "0", 0},
        {R"({"timestamp":0.0})", "0.0", 0},
    };
    for (const auto& [schema, stored, read] : cases) {
        EXPECT_TRUE(handler.persistEventSchema(schema));
        EXPECT_EQ(value("timestamp"), stored);
        EXPECT_EQ(handler.getEventSchemaTimestamp(), read) << schema;
    }
    for (const char* text : {"", "+5", " 5", "5 ", "0x5", "18446744073709551616", "99999999999999999999999"}) {
        value("timestamp") = text;
        EXPECT_EQ(handler.getEventSchemaTimestamp(), 0U) << text;
    }
    value("timestamp") = "007";
    EXPECT_EQ(handler.getEventSchemaTimestamp(), 7U) << "none was remembered so far";
    value("timestamp") = "8";
    EXPECT_EQ(handler.getEventSchemaTimestamp(), 7U);
    EXPECT_TRUE(handler.persistEventSchema(R"({"timestamp":9})"));
    EXPECT_EQ(handler.getEventSchemaTimestamp(), 9U);
}

TEST_F(Schema, AnswersAreKeptUntilTheNextSchemaArrives) {
    EXPECT_FALSE(handler.isEventSchemaAvailable());
    const std::string abc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    const std::string schema = R"({"salt":"c","settings_to_categories":{"ESSENTIAL":[1,4],"NON_ESSENTIAL":[2],
        "NEEDS_REVIEW":[3],"NON_ESSENTIAL_WITH_OTHER_CONSENT":[5]},
        "allowed_events":[{"identifier":")" +
                               abc + R"(","categories":[1,2]},{"identifier":"x","categories":[2],
            "extra_data_categories":{"granular":["p","q"]}}],
        "allowed_campaigns":[{"identifier":"x","categories":[5],"extra_data_categories":{"granular":["p"]}},
            {"identifier":"y","categories":[3]}]})";
    EXPECT_TRUE(handler.persistEventSchema(schema));
    EXPECT_TRUE(handler.isEventSchemaAvailable());
    EXPECT_EQ(cache->values, (decltype(cache->values){
                                 {{Store::EventSchema, "event_schema", "timestamp"}, "0"},
                                 {{Store::EventSchema, "event_schema", "salt"}, "c"},
                                 {{Store::EventSchema, "event_schema", abc}, "ESSENTIAL"},
                                 {{Store::EventSchema, "event_schema", "x"}, "NON_ESSENTIAL_WITH_OTHER_CONSENT"},
                                 {{Store::EventSchema, "event_schema", "y"}, "NEEDS_REVIEW"},
                                 {{Store::EventSchema, "event_schema_purpose", "x"}, "p"},
                             }));
    const std::string hash = handler.getHashedEventName("e");
    value(hash, "event_schema_purpose") = handler.getHashedString("Personalizatione");
    EXPECT_TRUE(handler.isPersonalizationPurposeOnly("e"));
    EXPECT_FALSE(handler.isAdsPersonalizationPurposeOnly("e"));
    value(handler.getHashedEventName("f"), "event_schema_purpose") = handler.getHashedString("Ads Personalizationf");
    EXPECT_FALSE(handler.isPersonalizationPurposeOnly("f"));
    EXPECT_TRUE(handler.isAdsPersonalizationPurposeOnly("f"));
    EXPECT_EQ(handler.getEventCategory("ab"), Category::Essential);
    EXPECT_EQ(handler.getEventCategory("absent"), Category::Uncategorized);
    value(handler.getHashedEventName("odd")) = "ODD";
    EXPECT_EQ(handler.getEventCategory("odd"), Category::Invalid);
    handler.overrideEventCategory("ab", Category::NeedsReview);
    handler.overrideEventCategory("new", Category::NonEssential);

    // Behind its back; "e" hashes to what it did.
    cache->values.clear();
    EXPECT_TRUE(handler.isPersonalizationPurposeOnly("e"));
    EXPECT_TRUE(handler.isAdsPersonalizationPurposeOnly("f"));
    EXPECT_EQ(handler.getEventCategory("ab"), Category::NeedsReview);
    EXPECT_EQ(handler.getEventCategory("new"), Category::NonEssential);
    EXPECT_EQ(handler.getHashedEventName("e"), hash);
    EXPECT_EQ(log.take(), Lines());

    for (const char* text : {"", "{", "[]", "5", "\"text\"", "null", std::string(2000, '[').c_str()}) {
        handler.overrideEventCategory("ab", Category::NeedsReview);
        EXPECT_FALSE(handler.persistEventSchema(text)) << text;
        EXPECT_EQ(log.take(), Lines{error("Wrong event schema format, not a json.")}) << text;
        EXPECT_EQ(cache->values.size(), 0U) << text;
        EXPECT_EQ(handler.getEventCategory("ab"), Category::Uncategorized) << text;
        log.take();
    }
    EXPECT_FALSE(handler.isPersonalizationPurposeOnly("e"));
    EXPECT_FALSE(handler.isAdsPersonalizationPurposeOnly("f"));
    EXPECT_EQ(handler.getHashedEventName("e"), "e");
    EXPECT_TRUE(handler.persistEventSchema("{}"));
    cache->works = false;
    EXPECT_FALSE(handler.isEventSchemaAvailable());
    EXPECT_TRUE(handler.persistEventSchema(schema)) << "what the stores do is not looked at";
}

TEST_F(Schema, WhatHasTheWrongShapeIsPassedOver) {
    const std::string noReview = error("Unexpected event category code, drop needs review category.");
    const std::string noOther =
        error("Unexpected event category code, drop non essential with other consent category.");
    const std::string entry = R"("allowed_events":[{"identifier":"e","categories":[1]}])";
    const std::tuple<std::string, const char*, Lines> cases[] = {
        // members of the schema, category of "e", messages
        {R"("settings_to_categories":{"NEEDS_REVIEW":[1,2]},)" + entry, "INVALID", {noReview}},
        {R"("settings_to_categories":{"NEEDS_REVIEW":["1"],"ESSENTIAL":[1]},)" + entry, "ESSENTIAL", {noReview}},
        {R"("settings_to_categories":{"NEEDS_REVIEW":null,"NON_ESSENTIAL":[1]},)" + entry, "NON_ESSENTIAL", {}},
        {R"("settings_to_categories":{"NEEDS_REVIEW":1,"NON_ESSENTIAL_WITH_OTHER_CONSENT":{"a":1}},)" + entry,
         "INVALID",
         {noReview, noOther}},
        {R"("settings_to_categories":{"NON_ESSENTIAL_WITH_OTHER_CONSENT":[],"ESSENTIAL":"1","NON_ESSENTIAL":{}},)" +
             entry,
         "INVALID",
         {noOther}},
        {R"("settings_to_categories":{"NON_ESSENTIAL_WITH_OTHER_CONSENT":[1.5]},)" + entry, "INVALID", {noOther}},
        {R"("settings_to_categories":{"ESSENTIAL":["x",null,true,4294967297,{},1]},)" + entry, "ESSENTIAL", {}},
        {R"("settings_to_categories":[],)" + entry, "INVALID", {}},
        {R"("salt":{},"allowed_campaigns":5,)" + entry, "INVALID", {}},
        {R"("allowed_events":{"identifier":"e"})", "", {}},
        {R"("allowed_events":[[],5,"e",null,{},{"identifier":null},{"identifier":5},{"identifier":"e"}])",
         "UNCATEGORIZED",
         {}},
        {R"("allowed_events":[{"identifier":"e","categories":{"a":1},"extra_data_categories":[]}])",
         "UNCATEGORIZED",
         {}},
        {R"("allowed_events":[{"identifier":"e","categories":["1",9e9],"extra_data_categories":{"granular":{}}}])",
         "UNCATEGORIZED",
         {}},
        {R"("allowed_campaigns":[{"identifier":"e","extra_data_categories":{"granular":[[]]}}])", "UNCATEGORIZED", {}},
    };
    for (const auto& [members, category, messages] : cases) {
        cache->values.clear();
        EXPECT_TRUE(handler.persistEventSchema("{" + members + "}")) << members;
        EXPECT_EQ(log.take(), messages) << members;
        EXPECT_EQ(value("e"), category) << members;
        EXPECT_EQ(value("salt"), "");
        EXPECT_EQ(value("e", "event_schema_purpose"), "");
        EXPECT_EQ(cache->values.size(), 4U) << members;
    }
    EXPECT_TRUE(handler.persistEventSchema(R"({"salt":7,"allowed_events":[{"identifier":"e",
        "extra_data_categories":{"granular":[true]}}]})"));
    EXPECT_EQ(value("salt") + value("e", "event_schema_purpose"), "7true") << "numbers and the like become texts";
}

}  // namespace Velo::OS::Telemetry
