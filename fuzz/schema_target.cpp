// Event schemas, and what the handler then says of some events. The input's first line is their names, with commas
// between them; the rest is the schema.

#include <openssl/evp.h>

#include <array>
#include <set>

#include "conversion/JsonMember.h"
#include "fuzz/JsonProperties.h"
#include "fuzz/Lines.h"
#include "replay/SchemaCheck.h"
#include "telemetry/EventSchemaHandler.h"
#include "tests/fakes/FakeStorageCache.h"

namespace {

using namespace Velo::OS::Telemetry;
using Category = IEventSchemaHandler::EventCategory;

// The answers as the format's documentation reads, with no thought of speed. What is of another type is
// missing, but for codes.

/// A number without its fraction, 0 or 1 for a truth value, 0 for null; nothing for what none of them is or holds.
std::optional<int> codeIn(const Json::Value& value) {
    if (value.isNull() || value == false) return 0;
    if (value == true) return 1;
    if (value.isInt()) return value.asInt();
    const bool isInRange = value.isDouble() && value.asDouble() > -2147483648.0 && value.asDouble() < 2147483647.0;
    return isInRange ? std::optional(static_cast<int>(value.asDouble())) : std::nullopt;
}

std::set<std::optional<int>> codesIn(const Json::Value& list) {
    std::set<std::optional<int>> codes;
    if (!list.isArray()) return codes;
    for (const Json::Value& code : list) codes.insert(codeIn(code));
    return codes;
}

std::string plainCategory(const std::set<std::optional<int>>& codes, const Json::Value& settings) {
    if (codes.count(std::nullopt) > 0) return "INVALID";
    const auto lists = [&](const char* name, std::optional<int> code) {
        return codesIn(memberOf(settings, name)).count(code) > 0;
    };
    const auto isTheOne = [&](const char* name, std::optional<int> code) {
        return memberOf(settings, name).size() == 1 && lists(name, code);
    };
    constexpr char kOtherConsent[] = "NON_ESSENTIAL_WITH_OTHER_CONSENT";
    if (codes.empty()) return "UNCATEGORIZED";
    if (codes.size() == 1 && isTheOne("NEEDS_REVIEW", *codes.begin())) return "NEEDS_REVIEW";
    if (codes.size() == 1 && isTheOne(kOtherConsent, *codes.begin())) return kOtherConsent;
    bool isEssential = false;
    for (const std::optional<int> code : codes) {
        const bool isKnown = lists("ESSENTIAL", code) || lists("NON_ESSENTIAL", code);
        if (isTheOne("NEEDS_REVIEW", code) || !isKnown) return "INVALID";
        isEssential = isEssential || lists("ESSENTIAL", code);
    }
    return isEssential ? "ESSENTIAL" : "NON_ESSENTIAL";
}

uint64_t plainTimestamp(const Json::Value& timestamp) {
    const bool isInteger = timestamp.type() == Json::intValue || timestamp.type() == Json::uintValue;
    return isInteger && timestamp.isUInt64() ? timestamp.asUInt64() : 0;
}

/// Nothing if an entry bears a name that the store keeps for itself.
std::optional<std::string> plainAnswersOn(const std::string& name, const Json::Value& root,
                                          EventSchemaHandler& handler) {
    const std::string hashed = handler.getHashedEventName(name);
    std::string category = "UNCATEGORIZED", purpose = "0";
    for (const char* list : {"allowed_events", "allowed_campaigns"}) {
        if (!memberOf(root, list).isArray()) continue;
        for (const Json::Value& entry : memberOf(root, list)) {
            const Json::Value& identifier = memberOf(entry, "identifier");
            if (identifier == "salt" || identifier == "timestamp") return std::nullopt;
            if (identifier.isArray() || identifier.isObject() || identifier.asString() != hashed) continue;
            category = plainCategory(codesIn(memberOf(entry, "categories")), memberOf(root, "settings_to_categories"));
            const Json::Value& purposes = memberOf(memberOf(entry, "extra_data_categories"), "granular");
            const bool isOne = purposes.isArray() && purposes.size() == 1;
            if (isOne && !purposes[0].isArray() && !purposes[0].isObject()) purpose = purposes[0].asString();
        }
    }
    return name + ": " + category + (purpose == handler.getHashedString("Personalization" + name) ? " personal" : "") +
           (purpose == handler.getHashedString("Ads Personalization" + name) ? " ads" : "") + " since " +
           std::to_string(plainTimestamp(memberOf(root, "timestamp")));
}

std::string hashOf(const std::string& text) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    EVP_Digest(text.data(), text.size(), digest.data(), &length, EVP_sha256(), nullptr);
    std::string digits;
    for (unsigned i = 0; i < length; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof(pair), "%02x", digest[i]);
        digits += pair;
    }
    return digits;
}

std::string answersOn(const std::string& name, EventSchemaHandler& handler) {
    const Category category = handler.getEventCategory(name);
    const std::string text = EventSchemaHandler::getEventCategoryStr(category);
    fuzz::require(EventSchemaHandler::getEventCategoryEnum(text) == category, "A category has a text of its own", text);
    return name + ": " + text + (handler.isPersonalizationPurposeOnly(name) ? " personal" : "") +
           (handler.isAdsPersonalizationPurposeOnly(name) ? " ads" : "") + " since " +
           std::to_string(handler.getEventSchemaTimestamp());
}

void requireHash(const std::string& name, EventSchemaHandler& handler, fakes::FakeStorageCache& storage) {
    const std::string salt = storage.getValue(Store::EventSchema, "event_schema", "salt", "");
    fuzz::requireEqual(handler.getHashedEventName(name), salt.empty() ? name : hashOf(name + salt),
                       "Names are hashed with the salt");
}

void requireStable(const std::string& name, EventSchemaHandler& handler,
                   const std::shared_ptr<fakes::FakeStorageCache>& storage) {
    const std::string answers = answersOn(name, handler);
    fuzz::requireEqual(answersOn(name, handler), answers, "What is asked twice is answered alike");
    EventSchemaHandler later(storage);
    fuzz::requireEqual(answersOn(name, later), answers, "The stores keep all there is to know");
    requireHash(name, later, *storage);

    handler.overrideEventCategory(name, Category::NeedsReview);
    fuzz::require(handler.getEventCategory(name) == Category::NeedsReview, "An override holds", name);
    const auto kept = storage->values;
    fuzz::require(!handler.persistEventSchema("[]") && kept == storage->values, "A bad schema stores nothing", name);
    fuzz::requireEqual(answersOn(name, handler), answers, "A bad schema ends overrides and changes nothing else");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view rest = fuzz::textOf(data, size);
    std::string_view names = fuzz::takeUntil('\n', rest);
    const std::string schema(rest);
    replay::checkSchema(schema);

    const auto storage = std::make_shared<fakes::FakeStorageCache>();
    EventSchemaHandler handler(storage);
    fuzz::require(!handler.isEventSchemaAvailable(), "There is no schema before the first");
    const std::optional<Json::Value> root = fuzz::jsoncppValue(schema);
    const bool isSchema = root && (root->isObject() || root->isNull());
    fuzz::require(handler.persistEventSchema(schema) == isSchema, "An object or null is a schema", schema);
    fuzz::require(handler.isEventSchemaAvailable() == isSchema, "A schema that was stored is available", schema);
    while (!names.empty()) {
        const std::string name(fuzz::takeUntil(',', names));
        requireStable(name, handler, storage);
        const auto expected = plainAnswersOn(name, isSchema ? *root : Json::Value(), handler);
        const bool isReserved = name == "salt" || name == "timestamp";  // which the store takes for an event's
        if (expected && !isReserved)
            fuzz::requireEqual(answersOn(name, handler), *expected, "Answers go by the schema");
    }
    return 0;
}
