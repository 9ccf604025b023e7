#include "telemetry/TelemetryEventBundle.h"

#include <android/log.h>

#include <charconv>
#include <limits>
#include <utility>

#include "conversion/JsonComparison.h"
#include "conversion/JsonMember.h"
#include "conversion/JsonNumber.h"
#include "conversion/Nesting.h"
#include "event/JsonValueOf.h"
#include "telemetry/BundleToJson.h"

namespace Velo::OS::Telemetry {

namespace {

constexpr int64_t kDefaultAppId = 736366014426470;

// The two members of a document; jsoncpp need not copy names that are static.
constexpr char kDataMember[] = "data";
constexpr char kNameMember[] = "event_name";

/// 1 / rate as an integer. What no unsigned long holds becomes the nearest one that it does, and NaN 0, as on the
/// device's processors.
unsigned long inverseOf(float rate) {
    if (rate == 0.0F) return 0;
    const float inverse = 1.0F / rate;
    if (!(inverse > 0.0F)) return 0;
    if (inverse >= 18446744073709551616.0F) return std::numeric_limits<unsigned long>::max();
    return static_cast<unsigned long>(inverse);
}

}  // namespace

TelemetryEventBundle::TelemetryEventBundle(const std::string& name, unsigned int uid, bool realtime,
                                           const android::os::PersistableBundle& bundle)
    : bundle_(bundle), uid_(uid), intakeFormat_(IntakeFormat::JsonBundle) {
    document_[Json::StaticString(kNameMember)] = name;
    document_[Json::StaticString(kDataMember)]["realtime"] = realtime;
    overrideIntakeFormat();
}

TelemetryEventBundle::TelemetryEventBundle(const std::string& name, unsigned int uid, bool realtime)
    : TelemetryEventBundle(name, uid, realtime, android::os::PersistableBundle()) {}

TelemetryEventBundle::TelemetryEventBundle(const std::string& name, Json::Value data, unsigned int uid,
                                           IntakeFormat format)
    : uid_(uid), intakeFormat_(format) {
    document_[Json::StaticString(kNameMember)] = name;
    // Like any data that is no object: the event goes on without members and its text is empty.
    if (refuseTooDeep(name, data)) data = Json::arrayValue;
    document_[Json::StaticString(kDataMember)] = std::move(data);
    // Deliberate: an event that arrives as JSON is never a priority event, whatever its data says.
    addToJsonEventMetadata("realtime", false);
    overrideIntakeFormat();
}

TelemetryEventBundle::TelemetryEventBundle(TelemetryEventBundle&& other)
    : bundle_(other.bundle_),
      document_(std::move(other.document_)),
      uid_(other.uid_),
      intakeFormat_(other.intakeFormat_) {}

TelemetryEventBundle& TelemetryEventBundle::operator=(TelemetryEventBundle&& other) {
    if (this == &other) return *this;
    bundle_ = other.bundle_;
    document_ = std::move(other.document_);
    return *this;
}

TelemetryEventBundle::~TelemetryEventBundle() = default;

bool TelemetryEventBundle::operator==(TelemetryEventBundle& other) {
    return bundle_ == other.bundle_ && isSameJson(document_, other.document_);
}

/// "data" is the first member by name, so that it need not be looked up. Of an event that was moved from there is none.
const Json::Value& TelemetryEventBundle::data() const { return document_.isObject() ? *document_.begin() : nullJson(); }

Json::Value& TelemetryEventBundle::data() {
    return document_.isObject() ? *document_.begin() : document_[Json::StaticString(kDataMember)];
}

/// Like `getFromEventMetadata`, without copying what the data holds: `storage` takes what the bundle holds.
const Json::Value& TelemetryEventBundle::metadata(std::string_view key, std::optional<Json::Value>& storage) const {
    const Json::Value& members = data();
    if (members.isObject()) {
        const Json::Value* member = members.find(key.data(), key.data() + key.size());
        if (member) return *member;
    }
    const bool isInData = converted_ && conversionSucceeded_;
    if (isInData || bundle_.empty()) return nullJson();
    return storage.emplace(getScalarValueFromBundle(bundle_, std::string(key)));
}

std::string TelemetryEventBundle::metadataText(std::string_view key) const {
    std::optional<Json::Value> storage;
    return validateStr(metadata(key, storage), {});
}

bool TelemetryEventBundle::metadataBool(std::string_view key) const {
    std::optional<Json::Value> storage;
    return validateBool(metadata(key, storage), false);
}

long TelemetryEventBundle::metadataNumber(std::string_view key, long defaultValue) const {
    std::optional<Json::Value> storage;
    return validateInt(metadata(key, storage), defaultValue);
}

const std::string* TelemetryEventBundle::property(const char* key) const {
    const auto found = properties_.find(key);
    return found == properties_.end() ? nullptr : &found->second;
}

Json::Value TelemetryEventBundle::getFromEventMetadata(const std::string& key) const {
    std::optional<Json::Value> storage;
    return metadata(key, storage);
}

void TelemetryEventBundle::addToJsonEventMetadata(const std::string& key, Json::Value&& value) {
    cachedJson_.reset();
    if (nestsDeeperThan(kMaxNesting - 1, value)) {
        __android_log_print(ANDROID_LOG_WARN, "TelemetryService",
                            "Member [%s] of event [name: %s] is nested too deep and was not added.", key.c_str(),
                            TelemetryEventBundle::name().c_str());
        return dismantle(value);
    }
    Json::Value& target = data();
    // Data that is no object has no members; its conversion fails, and with it the event's JSON text.
    if (target.isObject() || target.isNull()) target[key] = std::move(value);
}

std::string TelemetryEventBundle::validateStr(const Json::Value& value, const std::string& defaultValue) const {
    return value.isString() ? value.asString() : defaultValue;
}

bool TelemetryEventBundle::validateBool(const Json::Value& value, bool defaultValue) const {
    return value.isBool() ? value.asBool() : defaultValue;
}

long TelemetryEventBundle::validateInt(const Json::Value& value, long defaultValue) const {
    return toInt64(value).value_or(defaultValue);
}

std::string TelemetryEventBundle::name() const { return validateStr(std::as_const(document_)[kNameMember], {}); }
std::string TelemetryEventBundle::sessionsV2() const { return metadataText("__sessions_v2"); }
uint32_t TelemetryEventBundle::uid() const { return uid_; }
bool TelemetryEventBundle::priority() const { return metadataBool("realtime"); }
int64_t TelemetryEventBundle::time() const { return metadataNumber("timestamp", 0); }
int64_t TelemetryEventBundle::clientCreatedTime() const { return metadataNumber("utl_realtime_ms", 0); }
bool TelemetryEventBundle::adjustedTime() const { return metadataBool("adjusted"); }
std::string TelemetryEventBundle::loggingPackage() const { return metadataText("utl_logging_package"); }
std::string TelemetryEventBundle::osBuildNumber() const { return metadataText("build_version"); }
std::string TelemetryEventBundle::appVersion() const { return metadataText("sdk_app_package_version_name"); }
int64_t TelemetryEventBundle::tags() const { return metadataNumber("utl_eventTag", 0); }
int64_t TelemetryEventBundle::sampleRateAsPelko() const { return metadataNumber("applied_sample_rate", 1); }
IntakeFormat TelemetryEventBundle::getIntakeFormat() const { return intakeFormat_; }

int64_t TelemetryEventBundle::appId() const {
    const int64_t id = metadataNumber("utl_app_id", kDefaultAppId);
    return id == 0 ? kDefaultAppId : id;  // deliberate: 0 counts as absent
}

std::string TelemetryEventBundle::deviceId() const {
    const std::string* id = property("morlek_device_id");
    return id ? *id : std::string();
}

int64_t TelemetryEventBundle::arvoUserId() const {
    const std::string* id = property("id");
    // Deliberate: unlike the member "id", the property is not checked first, so text that is no number throws.
    return id ? std::stol(*id) : getArvoUserIdFromSorel();
}

int64_t TelemetryEventBundle::getArvoUserIdFromSorel() const {
    std::optional<Json::Value> storage;
    const Json::Value& id = metadata("id", storage);
    if (id.isInt64()) return id.asInt64();
    if (!id.isString()) return 0;
    const std::string text = id.asString();
    int64_t number = 0;
    if (!isStrNumber(text)) return 0;
    const bool fits = std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
    return fits ? number : 0;
}

long TelemetryEventBundle::consentState() const {
    const std::string* state = property("consent_state");
    // Deliberate: not checked either.
    return state ? std::stol(*state) : 0;
}

std::optional<std::string> TelemetryEventBundle::getLoggingPathway() const {
    std::optional<Json::Value> storage;
    const Json::Value& pathway = metadata("utl_logging_pathway", storage);
    if (!pathway.isString()) return std::nullopt;
    return pathway.asString();
}

void TelemetryEventBundle::overrideIntakeFormat() {
    const std::optional<std::string> pathway = getLoggingPathway();
    if (!pathway) return;
    intakeFormat_ = getIntakeFormatFromLoggingPathway(*pathway).value_or(intakeFormat_);
}

void TelemetryEventBundle::addBool(const std::string& key, bool value) { addToJsonEventMetadata(key, value); }
void TelemetryEventBundle::addInt(const std::string& key, int value) { addToJsonEventMetadata(key, value); }
void TelemetryEventBundle::addUInt(const std::string& key, unsigned int value) { addToJsonEventMetadata(key, value); }

void TelemetryEventBundle::addLong(const std::string& key, long value) {
    addToJsonEventMetadata(key, static_cast<Json::Int64>(value));
}

void TelemetryEventBundle::addULong(const std::string& key, unsigned long value) {
    addToJsonEventMetadata(key, static_cast<Json::UInt64>(value));
}

void TelemetryEventBundle::addDouble(const std::string& key, double value) { addToJsonEventMetadata(key, value); }

void TelemetryEventBundle::addString(const std::string& key, const std::string& value) {
    addToJsonEventMetadata(key, value);
}

void TelemetryEventBundle::addString(const std::string& key, const char* value) { addToJsonEventMetadata(key, value); }

void TelemetryEventBundle::addStringVector(const std::string& key, const std::vector<std::string>& value) {
    Json::Value array(Json::arrayValue);
    for (const std::string& text : value) array.append(text);
    addToJsonEventMetadata(key, std::move(array));
}

void TelemetryEventBundle::addJson(const std::string& key, Json::Value&& value) {
    addToJsonEventMetadata(key, std::move(value));
}

void TelemetryEventBundle::addProperty(const std::string& key, std::string value) {
    properties_.insert_or_assign(key, std::move(value));
}

void TelemetryEventBundle::setSampleRate(float rate) { addULong("applied_sample_rate", inverseOf(rate)); }

void TelemetryEventBundle::setUid(unsigned int uid) { uid_ = uid; }

}  // namespace Velo::OS::Telemetry
