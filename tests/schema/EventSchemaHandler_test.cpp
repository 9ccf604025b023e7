#include "telemetry/EventSchemaHandler.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/fakes/FakeStorageCache.h"
#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using Category = IEventSchemaHandler::EventCategory;
using Lines = std::vector<std::string>;

constexpr char kAbc[] = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";  // the hash of "abc"

std::string error(const std::string& message) { return "6 telemetry-eventfiltering: " + message; }

class Schema : public testing::Test {
protected:
    std::string& value(const std::string& key, const char* store = "event_schema") {
        return cache->values[{Store::EventSchema, store, key}];
    }
    /// Both stores as "key=value " with a "!" before what is a purpose.
    std::string contents() {
        std::string text;
        for (const auto& [place, value] : cache->values) {
            const auto& [kind, store, key] = place;
            EXPECT_EQ(kind, Store{4});
            EXPECT_TRUE(store == "event_schema" || store == "event_schema_purpose");
            text += (store == "event_schema" ? "" : "!") + key + "=" + value + " ";
        }
        return text;
    }

    std::shared_ptr<fakes::FakeStorageCache> cache = std::make_shared<fakes::FakeStorageCache>();
    EventSchemaHandler handler{cache};
    fakes::LogCapture log;
};

TEST_F(Schema, CodesMakeACategory) {
    constexpr int R = 1, K = 2, E = 3, E2 = 4, N = 5;  // for review, with other consent, essential, non-essential
    using Codes = std::unordered_set<int32_t>;
    const std::pair<const char*, std::vector<Codes>> cases[] = {
        {"NEEDS_REVIEW", {{R}}},
        {"NON_ESSENTIAL_WITH_OTHER_CONSENT", {{K}}},
        {"UNCATEGORIZED", {{}}},
        {"INVALID", {{R, E}, {R, N, E}, {K, R}, {99}, {E, 99}, {N, 99}, {K, E}}},
        {"ESSENTIAL", {{E}, {E, E2}, {E, N}}},
        {"NON_ESSENTIAL", {{N}}},
    };
    for (const auto& [category, sets] : cases) {
        for (const Codes& codes : sets) {
            EXPECT_EQ(handler.getCategoryFromCodes(codes, R, K, {E, E2}, {N}), category)
                << testing::PrintToString(codes);
        }
    }
    EXPECT_EQ(handler.getCategoryFromCodes({K, E}, R, K, {E}, {K}), "ESSENTIAL") << "a code like any other";
    EXPECT_EQ(handler.getCategoryFromCodes({R, K}, {}, {}, {R}, {K}), "ESSENTIAL") << "no code is for review";
    EXPECT_EQ(handler.getCategoryFromCodes({K}, K, K, {}, {}), "NEEDS_REVIEW");
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
    value("salt") = "late";
    EXPECT_EQ(handler.getHashedString("ab"), "ab") << "the empty salt is remembered";
    EXPECT_EQ(log.take(), Lines(2, error("Invalid salt, don't hash event name.")));

    // Examples of NIST's, each split into text and salt.
    const std::tuple<std::string, std::string, const char*> vectors[] = {
        {"ab", "c", kAbc},
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
    value("salt") = "c";
    EXPECT_EQ(EventSchemaHandler(cache).getHashedEventPurpose("b", "a"), kAbc);
    EXPECT_EQ(log.take(), Lines());
}

TEST_F(Schema, ATimestampIsReadBackOnlyIfItIsAWholeNumber) {
    const std::tuple<const char*, const char*, uint64_t> cases[] = {
        // in the schema, in the store, read back
        {R"("timestamp":1234)", "1234", 1234},
        {R"("timestamp":18446744073709551615)", "18446744073709551615", 18446744073709551615U},
        {R"("timestamp":18446744073709551616)", "1.8446744073709552e+19", 0},
        {R"("timestamp":"123")", "0", 0},
        {R"("timestamp":-1)", "-1", 0},
        {R"("timestamp":null)", "null", 0},
        {R"("timestamp":[1,{"a":2}])", R"([1,{"a":2}])", 0},
        {"", "0", 0},
        {R"("timestamp":1.5)", "1.5", 0},
    };
    for (const auto& [member, stored, read] : cases) {
        EXPECT_TRUE(handler.persistEventSchema(std::string("{") + member + "}"));
        EXPECT_EQ(value("timestamp"), stored);
        EXPECT_EQ(handler.getEventSchemaTimestamp(), read) << member;
    }
    for (const char* text : {"", "+5", " 5", "5 ", "18446744073709551616", "99999999999999999999999"}) {
        value("timestamp") = text;
        EXPECT_EQ(handler.getEventSchemaTimestamp(), 0U) << text;
    }
    for (const char* text : {"007", "8"}) {
        value("timestamp") = text;
        EXPECT_EQ(handler.getEventSchemaTimestamp(), 7U) << "the first that can be read is remembered";
    }
}

TEST_F(Schema, ASchemaIsStoredAsFarAsItHasTheRightShape) {
    const auto review = error("Unexpected event category code, drop needs review category.");
    const auto other = error("Unexpected event category code, drop non essential with other consent category.");
    const auto withCodes = [](const std::string& lists) {
        return R"("settings_to_categories":{)" + lists + R"(},"allowed_events":[{"identifier":"e","categories":[1]}])";
    };
    const std::string many = R"("salt":"c","settings_to_categories":{"ESSENTIAL":[1,4],"NON_ESSENTIAL":[2],
        "NEEDS_REVIEW":[3],"NON_ESSENTIAL_WITH_OTHER_CONSENT":[5]},"allowed_events":[{"identifier":"w","categories":[4],"extra_data_categories":{"granular":["p","q"]}},
        {"identifier":"x","categories":[2]},{"identifier":"z"}],
        "allowed_campaigns":[{"identifier":"x","categories":[5],"extra_data_categories":{"granular":["p"]}},
        {"identifier":"y","categories":[3],"extra_data_categories":{"granular":[]}}])";
    const std::tuple<std::string, const char*, Lines> cases[] = {
        // members of the schema, what they add to the stores, messages
        {many, "w=ESSENTIAL x=NON_ESSENTIAL_WITH_OTHER_CONSENT y=NEEDS_REVIEW z=UNCATEGORIZED !x=p ", {}},
        {withCodes(R"("NEEDS_REVIEW":[1,2])"), "e=INVALID ", {review}},
        {withCodes(R"("NEEDS_REVIEW":["1"],"ESSENTIAL":[1])"), "e=ESSENTIAL ", {review}},
        {withCodes(R"("NEEDS_REVIEW":null,"NON_ESSENTIAL":[1])"), "e=NON_ESSENTIAL ", {}},
        {withCodes(R"("NEEDS_REVIEW":1,"NON_ESSENTIAL_WITH_OTHER_CONSENT":{"a":1})"), "e=INVALID ", {review, other}},
        {withCodes(R"("NON_ESSENTIAL_WITH_OTHER_CONSENT":[],"ESSENTIAL":"1")"), "e=INVALID ", {other}},
        {withCodes(R"("NON_ESSENTIAL_WITH_OTHER_CONSENT":[1.5],"NON_ESSENTIAL":{})"),
         "e=NON_ESSENTIAL_WITH_OTHER_CONSENT ",
         {}},
        {withCodes(R"("ESSENTIAL":["x",null,4294967297,{},true])"), "e=ESSENTIAL ", {}},
        {withCodes(R"("NON_ESSENTIAL":[1,0],"ESSENTIAL":["1"])") + R"(,"allowed_campaigns":[
             {"identifier":"f","categories":[null,1.9]},{"identifier":"g","categories":[1,"1"]},
             {"identifier":"h","categories":[4294967297]}])",
         "e=NON_ESSENTIAL f=NON_ESSENTIAL g=INVALID h=INVALID ",
         {}},
        {R"("settings_to_categories":[],"salt":{},"allowed_campaigns":[{"identifier":"e","categories":[1]}])",
         "e=INVALID ",
         {}},
        {R"("allowed_events":{"a":{"identifier":"e"}},"allowed_campaigns":5)", "", {}},
        {R"("allowed_events":[{"identifier":[]},{"identifier":{}}])", "", {}},
        {R"("allowed_events":[[],5,"e",null,{},{"identifier":null}])", "=UNCATEGORIZED ", {}},
        {R"("allowed_events":[{"identifier":5},{"identifier":true}])", "5=UNCATEGORIZED true=UNCATEGORIZED ", {}},
        {R"("allowed_events":[{"identifier":"e","categories":{"a":1},"extra_data_categories":[]}])",
         "e=UNCATEGORIZED ",
         {}},
        {R"("allowed_events":[{"identifier":"e","categories":["1"],"extra_data_categories":{"granular":{"p":1}}},
             {"identifier":"f","extra_data_categories":{"granular":[[]]}}])",
         "e=INVALID f=UNCATEGORIZED ",
         {}},
        {R"("allowed_events":[{"identifier":"e","extra_data_categories":{"granular":[true]}}])",
         "e=UNCATEGORIZED !e=true ",
         {}},
    };
    for (const auto& [members, added, messages] : cases) {
        cache->values.clear();
        EXPECT_FALSE(handler.isEventSchemaAvailable());
        EXPECT_TRUE(handler.persistEventSchema("{" + members + "}")) << members;
        EXPECT_TRUE(handler.isEventSchemaAvailable());
        EXPECT_EQ(std::exchange(value("salt"), ""), members == many ? "c" : "");
        EXPECT_EQ(log.take(), messages) << members;
        cache->values.erase({Store::EventSchema, "event_schema", "salt"});
        cache->values.erase({Store::EventSchema, "event_schema", "timestamp"});
        EXPECT_EQ(contents(), added) << members;
    }
    const KeyValueDispatch store(Store::EventSchema, "event_schema", cache);
    EXPECT_TRUE(store.setValue("k", "v") && store.removeValue("k"));
    EXPECT_EQ(store.getValue("k", "none"), "none");
    cache->works = false;
    EXPECT_FALSE(store.setValue("k", "v") || store.removeValue("k"));
    EXPECT_FALSE(handler.isEventSchemaAvailable());
    EXPECT_TRUE(handler.persistEventSchema("{}")) << "what the stores do is not looked at";
    cache->works = true;
    EXPECT_TRUE(handler.persistEventSchema("null"));
    EXPECT_EQ(contents(), "e=UNCATEGORIZED salt= timestamp=0 !e=true ") << "null is a schema without members";
}

TEST_F(Schema, AnswersAreKeptUntilTheNextSchemaArrives) {
    value("salt") = "c";
    value(kAbc) = "ESSENTIAL";
    value(handler.getHashedEventName("odd")) = "ODD";
    value(handler.getHashedEventName("p"), "event_schema_purpose") = handler.getHashedString("Personalizationp");
    value(handler.getHashedEventName("a"), "event_schema_purpose") = handler.getHashedString("Ads Personalizationa");
    value("timestamp") = "5";
    const auto answers = [&] {
        std::string text = std::to_string(handler.getEventSchemaTimestamp());
        for (const char* name : {"ab", "odd", "p", "a", "overridden"}) {
            text += " " + std::to_string(static_cast<int>(handler.getEventCategory(name))) +
                    (handler.isPersonalizationPurposeOnly(name) ? "p" : "") +
                    (handler.isAdsPersonalizationPurposeOnly(name) ? "a" : "");
        }
        return text;
    };
    handler.overrideEventCategory("overridden", Category::NeedsReview);
    EXPECT_EQ(answers(), "5 0 4 3p 3a 2");
    handler.overrideEventCategory("ab", Category::NonEssential);
    cache->values.clear();
    EXPECT_EQ(answers(), "5 1 4 3p 3a 2") << "the store is not read again";
    EXPECT_EQ(handler.getHashedString("ab"), kAbc);
    EXPECT_EQ(log.take(), Lines());

    for (const std::string& text :
         {std::string(), std::string("{"), std::string("[]"), std::string("5"), std::string(2000, '[')}) {
        handler.overrideEventCategory("ab", Category::NeedsReview);
        EXPECT_FALSE(handler.persistEventSchema(text));
        EXPECT_EQ(log.take(), Lines{error("Wrong event schema format, not a json.")}) << text;
        EXPECT_EQ(cache->values.size(), 0U) << text;
        EXPECT_EQ(answers(), "0 3 3 3 3 3") << text;
        EXPECT_EQ(handler.getHashedString("ab"), "ab");
        log.take();
    }
}

}  // namespace Velo::OS::Telemetry
