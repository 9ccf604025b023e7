#pragma once

#include <json/value.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "telemetry/Export.h"
#include "telemetry/IEventSchemaHandler.h"
#include "telemetry/KeyValueDispatch.h"
#include "telemetry/LockAnnotations.h"
#include "telemetry/StorageCache.h"

namespace Velo::OS::Telemetry {

/// The event schema as the device keeps it: two stores of texts, and in memory what was once asked.
///
/// A schema names events by hash, so a name can be looked up and not read. An answer is found once for each name, by a
/// hash and a read of the store, and kept until the next schema arrives; what else changes a store is not seen until
/// then. Identifiers that a new schema lacks stay in the stores with what an older one said.
///
/// The operations of the interface hold one lock for as long as they run, the storage cache's work included;
/// `isEventSchemaAvailable` takes none, nor do the members that only this class has: those that hash must not run
/// beside any other. What the storage cache throws passes through. The layout is ABI.
class TELEMETRY_EXPORT EventSchemaHandler : public IEventSchemaHandler {
public:
    // Names of the categories, in schemas and in the store.
    static constexpr char kCategoryEssential[] = "ESSENTIAL";
    static constexpr char kCategoryNonEssential[] = "NON_ESSENTIAL";
    static constexpr char kCategoryNeedsReview[] = "NEEDS_REVIEW";
    static constexpr char kCategoryUncategorized[] = "UNCATEGORIZED";
    static constexpr char kCategoryInvalid[] = "INVALID";
    static constexpr char kCategoryNonEssentialWithOtherConsent[] = "NON_ESSENTIAL_WITH_OTHER_CONSENT";

    static constexpr char kEventSchemaKeyValueStoreName[] = "event_schema";                 // categories by hashed name
    static constexpr char kEventSchemaPurposeKeyValueStoreName[] = "event_schema_purpose";  // hashed purposes, likewise

    static constexpr char kKeyTimestamp[] = "timestamp";  // of schemas and of the category store
    static constexpr char kKeySalt[] = "salt";            // likewise
    static constexpr char kJsonKeySettingsToCategories[] = "settings_to_categories";
    static constexpr char kJsonKeyAllowedEvents[] = "allowed_events";
    static constexpr char kJsonKeyAllowedCampaigns[] = "allowed_campaigns";
    static constexpr char kJsonKeyIdentifier[] = "identifier";
    static constexpr char kJsonKeyCategories[] = "categories";
    static constexpr char kJsonKeyExtraDataCategories[] = "extra_data_categories";
    static constexpr char kJsonKeyGranular[] = "granular";

    static constexpr char kPurposePersonalization[] = "Personalization";
    static constexpr char kPurposeAdsPersonalization[] = "Ads Personalization";

    /// The cache is shared and must not be null.
    explicit EventSchemaHandler(std::shared_ptr<StorageCache> storageCache);

    /// False, and nothing is stored, if the text is neither a JSON object nor null; what is kept in memory is forgotten
    /// all the same. A member of the wrong shape counts as missing, and the rest is stored. Scalars are taken as
    /// jsoncpp converts them: salts, identifiers and purposes to texts, codes to integers. An entry with what is no
    /// code, a text or a number beyond 32 bits, is `Invalid`; one whose identifier is an array or an object is passed
    /// over. Whether the stores take it is not looked at.
    bool persistEventSchema(const std::string& schema) override;
    /// An override, or what the store has; `Uncategorized` if it does not have the event, `Invalid` if what it has is
    /// no category.
    EventCategory getEventCategory(const std::string& eventName) override;
    void overrideEventCategory(const std::string& eventName, EventCategory category) override;
    /// Whether a schema was ever stored, by this process or an earlier one; false, too, if the store cannot tell.
    bool isEventSchemaAvailable() override;
    uint64_t getEventSchemaTimestamp() override;
    bool isPersonalizationPurposeOnly(const std::string& eventName) override;
    bool isAdsPersonalizationPurposeOnly(const std::string& eventName) override;

    /// The SHA-256 (FIPS 180-4) of the text and the schema's salt after it, in lower-case hexadecimal digits; the text
    /// itself, and an error in the log, if there is no salt or hashing fails. The salt is read once for each schema.
    // Unchecked: called with the lock and, as any other public member, without.
    std::string getHashedString(const std::string& text) TELEMETRY_NO_LOCK_CHECK;
    std::string getHashedEventName(const std::string& eventName);
    /// The hash of the purpose and the event's name after it.
    std::string getHashedEventPurpose(const std::string& eventName, const std::string& purpose);

    /// `Invalid` for what is no category's name.
    static EventCategory getEventCategoryEnum(const std::string& category);
    /// "INVALID" for what is no category.
    static std::string getEventCategoryStr(EventCategory category);

    /// Stores the category and the purpose of each entry of an array of a schema.
    void addAllowedEventsOrCampaigns(const Json::Value& entries, std::optional<int32_t> needsReviewCode,
                                     std::optional<int32_t> otherConsentCode,
                                     const std::unordered_set<int32_t>& essentialCodes,
                                     const std::unordered_set<int32_t>& nonEssentialCodes);
    /// The name of the category of an entry with these codes.
    std::string getCategoryFromCodes(const std::unordered_set<int32_t>& codes, std::optional<int32_t> needsReviewCode,
                                     std::optional<int32_t> otherConsentCode,
                                     const std::unordered_set<int32_t>& essentialCodes,
                                     const std::unordered_set<int32_t>& nonEssentialCodes) const;

private:
    KeyValueDispatch eventSchemaStore_;
    KeyValueDispatch eventSchemaPurposeStore_;
    // By event name. An override of a category stands among the answers.
    std::unordered_map<std::string, EventCategory> categoryCache_ TELEMETRY_GUARDED_BY(lock_);
    std::optional<std::string> salt_ TELEMETRY_GUARDED_BY(lock_);
    std::optional<uint64_t> schemaTimestamp_ TELEMETRY_GUARDED_BY(lock_);
    std::unordered_map<std::string, bool> personalizationOnlyCache_ TELEMETRY_GUARDED_BY(lock_);
    std::unordered_map<std::string, bool> adsPersonalizationOnlyCache_ TELEMETRY_GUARDED_BY(lock_);
    std::mutex lock_;
};

}  // namespace Velo::OS::Telemetry
