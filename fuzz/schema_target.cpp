// Event schemas, and what the handler then says of some events. The input's first line is their names, with commas
// between them; the rest is the schema.

#include <openssl/evp.h>

#include <array>

#include "fuzz/JsonProperties.h"
#include "fuzz/Lines.h"
#include "replay/SchemaCheck.h"
#include "telemetry/EventSchemaHandler.h"
#include "tests/fakes/FakeStorageCache.h"

namespace {

using namespace Velo::OS::Telemetry;
using Category = IEventSchemaHandler::EventCategory;

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
    const bool isSchema = root && root->isObject();
    fuzz::require(handler.persistEventSchema(schema) == isSchema, "An object is a schema and nothing else", schema);
    fuzz::require(handler.isEventSchemaAvailable() == isSchema, "A schema that was stored is available", schema);
    while (!names.empty()) requireStable(std::string(fuzz::takeUntil(',', names)), handler, storage);
    return 0;
}
