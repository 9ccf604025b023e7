#include "telemetry/EventSchemaHandler.h"

// A device's libcrypto offers these functions; on a desk they are deprecated.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <android/log.h>
#include <json/reader.h>
#include <openssl/sha.h>

#include <charconv>
#include <utility>

#include "conversion/CompactJson.h"
#include "conversion/Immortal.h"
#include "conversion/JsonMember.h"

namespace Velo::OS::Telemetry {

namespace {

using EventCategory = IEventSchemaHandler::EventCategory;
using Codes = std::unordered_set<int32_t>;

void logError(const char* message) { __android_log_write(ANDROID_LOG_ERROR, "telemetry-eventfiltering", message); }

// A schema comes from outside, and jsoncpp throws where it is asked for what a value is not.

std::optional<Json::Value> parse(const std::string& text) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value root;
    try {
        if (!reader->parse(text.data(), text.data() + text.size(), &root, nullptr)) return std::nullopt;
    } catch (const Json::Exception&) {
        return std::nullopt;  // nested beyond the reader's limit
    }
    // Deliberate: null is a schema, whose members are all missing.
    return root.isObject() || root.isNull() ? std::optional(std::move(root)) : std::nullopt;
}

/// An array; an empty one in place of anything else.
const Json::Value& arrayOf(const Json::Value& value) {
    static const Json::Value& empty = immortal<Json::Value>(Json::arrayValue);
    return value.isArray() ? value : empty;
}

/// A text, or a number, truth value or null as the text for it.
std::optional<std::string> asText(const Json::Value& value) {
    if (value.isArray() || value.isObject()) return std::nullopt;
    return value.asString();
}

/// A code as jsoncpp reads an integer: a truth value is 0 or 1, null is 0, and a number loses its fraction. None where
/// it throws: a text, a container, a number beyond 32 bits.
std::optional<int32_t> codeOf(const Json::Value& value) {
    try {
        return value.asInt();
    } catch (const Json::Exception&) {
        return std::nullopt;
    }
}

/// The codes of a category. What is no code cannot be met with in an entry.
Codes codesOf(const Json::Value& value) {
    Codes codes;
    for (const Json::Value& element : arrayOf(value)) {
        if (const auto code = codeOf(element)) codes.insert(*code);
    }
    return codes;
}

/// The codes of an entry; nothing if one of them is no code, and so no category's either.
std::optional<Codes> entryCodesOf(const Json::Value& value) {
    Codes codes;
    for (const Json::Value& element : arrayOf(value)) {
        const auto code = codeOf(element);
        if (!code) return std::nullopt;
        codes.insert(*code);
    }
    return codes;
}

/// The only code of an array that is to hold just one. Complains if it holds anything else.
std::optional<int32_t> singleCodeOf(const Json::Value& value, const char* complaint) {
    if (value.isNull()) return std::nullopt;
    const Json::Value& codes = arrayOf(value);
    const std::optional<int32_t> code = codes.size() == 1 ? codeOf(codes[0]) : std::nullopt;
    if (!code) logError(complaint);
    return code;
}

/// The answer that is kept for the name, or else the one that is found now.
template <typename Answer, typename Find>
Answer keptOrFound(std::unordered_map<std::string, Answer>& kept, const std::string& eventName, Find find) {
    const auto known = kept.find(eventName);
    if (known != kept.end()) return known->second;
    return kept.emplace(eventName, find()).first->second;
}

/// Whether the schema gave the event this purpose and no other.
bool servesOnly(const std::string& purpose, const std::string& eventName, EventSchemaHandler& handler,
                const KeyValueDispatch& purposes) {
    const std::string stored = purposes.getValue(handler.getHashedEventName(eventName), "0");
    return stored == handler.getHashedEventPurpose(eventName, purpose);
}

/// The 32 bytes as 64 digits.
std::string toHex(const unsigned char (&digest)[SHA256_DIGEST_LENGTH]) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * sizeof digest);
    for (const unsigned char byte : digest) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace

EventSchemaHandler::EventSchemaHandler(std::shared_ptr<StorageCache> storageCache)
    : eventSchemaStore_(Store::EventSchema, kEventSchemaKeyValueStoreName, storageCache),
      eventSchemaPurposeStore_(Store::EventSchema, kEventSchemaPurposeKeyValueStoreName, std::move(storageCache)) {}

bool EventSchemaHandler::persistEventSchema(const std::string& schema) {
    const std::lock_guard<std::mutex> lock(lock_);
    // Deliberate: a text that is no schema empties them too.
    categoryCache_.clear();
    personalizationOnlyCache_.clear();
    adsPersonalizationOnlyCache_.clear();
    salt_.reset();
    schemaTimestamp_.reset();

    const std::optional<Json::Value> root = parse(schema);
    if (!root) {
        logError("Wrong event schema format, not a json.");
        return false;
    }
    const Json::Value& timestamp = memberOf(*root, kKeyTimestamp);
    const bool hasTimestamp = root->isMember(kKeyTimestamp) && !timestamp.isString();
    eventSchemaStore_.setValue(kKeyTimestamp, hasTimestamp ? toCompactJson(timestamp) : "0");
    eventSchemaStore_.setValue(kKeySalt, asText(memberOf(*root, kKeySalt)).value_or(""));

    const Json::Value& categories = memberOf(*root, kJsonKeySettingsToCategories);
    const auto needsReviewCode = singleCodeOf(memberOf(categories, kCategoryNeedsReview),
                                              "Unexpected event category code, drop needs review category.");
    const auto otherConsentCode =
        singleCodeOf(memberOf(categories, kCategoryNonEssentialWithOtherConsent),
                     "Unexpected event category code, drop non essential with other consent category.");
    const Codes essentialCodes = codesOf(memberOf(categories, kCategoryEssential));
    const Codes nonEssentialCodes = codesOf(memberOf(categories, kCategoryNonEssential));
    for (const char* entries : {kJsonKeyAllowedEvents, kJsonKeyAllowedCampaigns}) {
        addAllowedEventsOrCampaigns(memberOf(*root, entries), needsReviewCode, otherConsentCode, essentialCodes,
                                    nonEssentialCodes);
    }
    return true;
}

void EventSchemaHandler::addAllowedEventsOrCampaigns(const Json::Value& entries, std::optional<int32_t> needsReviewCode,
                                                     std::optional<int32_t> otherConsentCode,
                                                     const std::unordered_set<int32_t>& essentialCodes,
                                                     const std::unordered_set<int32_t>& nonEssentialCodes) {
    for (const Json::Value& entry : arrayOf(entries)) {
        const std::optional<std::string> identifier = asText(memberOf(entry, kJsonKeyIdentifier));
        if (!identifier) continue;
        const std::optional<Codes> codes = entryCodesOf(memberOf(entry, kJsonKeyCategories));
        eventSchemaStore_.setValue(*identifier, codes ? getCategoryFromCodes(*codes, needsReviewCode, otherConsentCode,
                                                                             essentialCodes, nonEssentialCodes)
                                                      : kCategoryInvalid);
        // An event with several purposes serves none of them only.
        const Json::Value& purposes = arrayOf(memberOf(memberOf(entry, kJsonKeyExtraDataCategories), kJsonKeyGranular));
        if (purposes.size() != 1) continue;
        const std::optional<std::string> purpose = asText(purposes[0]);
        if (purpose) eventSchemaPurposeStore_.setValue(*identifier, *purpose);
    }
}

std::string EventSchemaHandler::getCategoryFromCodes(const std::unordered_set<int32_t>& codes,
                                                     std::optional<int32_t> needsReviewCode,
                                                     std::optional<int32_t> otherConsentCode,
                                                     const std::unordered_set<int32_t>& essentialCodes,
                                                     const std::unordered_set<int32_t>& nonEssentialCodes) const {
    const bool needsReview = needsReviewCode && codes.count(*needsReviewCode) > 0;
    if (needsReview) return codes.size() == 1 ? kCategoryNeedsReview : kCategoryInvalid;
    // Deliberate: among other codes this one counts like any of them, unlike the one above.
    if (otherConsentCode && codes.size() == 1 && codes.count(*otherConsentCode) > 0) {
        return kCategoryNonEssentialWithOtherConsent;
    }
    if (codes.empty()) return kCategoryUncategorized;
    bool isEssential = false;
    for (const int32_t code : codes) {
        if (essentialCodes.count(code) > 0) {
            isEssential = true;
        } else if (nonEssentialCodes.count(code) == 0) {
            return kCategoryInvalid;
        }
    }
    return isEssential ? kCategoryEssential : kCategoryNonEssential;
}

std::string EventSchemaHandler::getHashedString(const std::string& text) {
    if (!salt_) salt_ = eventSchemaStore_.getValue(kKeySalt, "");
    if (salt_->empty()) {
        logError("Invalid salt, don't hash event name.");
        return text;
    }
    const std::string salted = text + *salt_;
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256_CTX context;
    const char* failure = nullptr;
    if (SHA256_Init(&context) != 1) {
        failure = "SHA256 init failed.";
    } else if (SHA256_Update(&context, salted.data(), salted.size()) != 1) {
        failure = "SHA256 update failed";
    } else if (SHA256_Final(digest, &context) != 1) {
        failure = "SHA256 final failed";
    }
    if (!failure) return toHex(digest);
    logError(failure);
    return text;
}

std::string EventSchemaHandler::getHashedEventName(const std::string& eventName) { return getHashedString(eventName); }

std::string EventSchemaHandler::getHashedEventPurpose(const std::string& eventName, const std::string& purpose) {
    return getHashedString(purpose + eventName);
}

EventCategory EventSchemaHandler::getEventCategory(const std::string& eventName) {
    const std::lock_guard<std::mutex> lock(lock_);
    return keptOrFound(categoryCache_, eventName, [&] {
        return getEventCategoryEnum(eventSchemaStore_.getValue(getHashedEventName(eventName), kCategoryUncategorized));
    });
}

void EventSchemaHandler::overrideEventCategory(const std::string& eventName, EventCategory category) {
    const std::lock_guard<std::mutex> lock(lock_);
    categoryCache_[eventName] = category;
}

bool EventSchemaHandler::isEventSchemaAvailable() {
    std::unordered_set<std::string> keys;
    return eventSchemaStore_.listKeys(keys) && !keys.empty();
}

uint64_t EventSchemaHandler::getEventSchemaTimestamp() {
    const std::lock_guard<std::mutex> lock(lock_);
    if (schemaTimestamp_) return *schemaTimestamp_;
    const std::string text = eventSchemaStore_.getValue(kKeyTimestamp, "0");
    const char* const end = text.data() + text.size();
    uint64_t timestamp = 0;
    const auto [parsed, error] = std::from_chars(text.data(), end, timestamp);
    // More than 64 bits hold is no time at all: what could be made of it would pass for one.
    if (error != std::errc() || parsed != end) return 0;
    schemaTimestamp_ = timestamp;
    return timestamp;
}

bool EventSchemaHandler::isPersonalizationPurposeOnly(const std::string& eventName) {
    const std::lock_guard<std::mutex> lock(lock_);
    return keptOrFound(personalizationOnlyCache_, eventName,
                       [&] { return servesOnly(kPurposePersonalization, eventName, *this, eventSchemaPurposeStore_); });
}

bool EventSchemaHandler::isAdsPersonalizationPurposeOnly(const std::string& eventName) {
    const std::lock_guard<std::mutex> lock(lock_);
    return keptOrFound(adsPersonalizationOnlyCache_, eventName, [&] {
        return servesOnly(kPurposeAdsPersonalization, eventName, *this, eventSchemaPurposeStore_);
    });
}

EventCategory EventSchemaHandler::getEventCategoryEnum(const std::string& category) {
    using Categories = std::unordered_map<std::string, EventCategory>;
    static const Categories& categories = immortal<Categories>(Categories{
        {kCategoryEssential, EventCategory::Essential},
        {kCategoryNonEssential, EventCategory::NonEssential},
        {kCategoryNeedsReview, EventCategory::NeedsReview},
        {kCategoryUncategorized, EventCategory::Uncategorized},
        {kCategoryInvalid, EventCategory::Invalid},
        {kCategoryNonEssentialWithOtherConsent, EventCategory::NonEssentialWithOtherConsent},
    });
    const auto found = categories.find(category);
    return found == categories.end() ? EventCategory::Invalid : found->second;
}

std::string EventSchemaHandler::getEventCategoryStr(EventCategory category) {
    switch (category) {
        case EventCategory::Essential:
            return kCategoryEssential;
        case EventCategory::NonEssential:
            return kCategoryNonEssential;
        case EventCategory::NeedsReview:
            return kCategoryNeedsReview;
        case EventCategory::Uncategorized:
            return kCategoryUncategorized;
        case EventCategory::Invalid:
            return kCategoryInvalid;
        case EventCategory::NonEssentialWithOtherConsent:
            return kCategoryNonEssentialWithOtherConsent;
    }
    return kCategoryInvalid;
}

}  // namespace Velo::OS::Telemetry
