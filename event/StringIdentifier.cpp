// The identifiers of `TelemetryEventBundle`.

#include <android/log.h>

#include "conversion/JsonNumber.h"
#include "telemetry/JsonToBundle.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry {

namespace {

constexpr char kLogTag[] = "TelemetryService";
constexpr char kOnDemandEventName[] = "ondemand_statsd_utl";

/// The number in the member `key` of `object` (which may be no object), unless it is -1, which stands for no number.
std::optional<int64_t> idIn(const Json::Value& object, const char* key) {
    if (!object.isObject()) return std::nullopt;
    const std::optional<int64_t> id = toInt64(object[key]);
    return id == -1 ? std::nullopt : id;
}

}  // namespace

std::string TelemetryEventBundle::getStringIdentifier() {
    if (!cachedIdentifier_) {
        std::string eventName = name();
        if (eventName == kOnDemandEventName) {
            cachedIdentifier_ = getStringIdentifierODT();
        } else if (eventName == kKlxEventName || eventName == kLegacyKlxEventName) {
            cachedIdentifier_ = getStringIdentifierKLX();
        } else {
            cachedIdentifier_ = std::move(eventName);
        }
    }
    return *cachedIdentifier_;
}

std::string TelemetryEventBundle::getStringIdentifierODT() {
    if (const auto campaign = idIn(convertedData(), "campaign_id")) return kOnDemandPrefix + std::to_string(*campaign);
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "ondemand's campaign_id is not found.");
    return kOnDemandEventName;
}

std::string TelemetryEventBundle::getStringIdentifierKLX() {
    const Json::Value& data = convertedData();
    const bool hasMarker = data.isObject() && data.isMember("marker_id");
    if (!hasMarker && !(data.isObject() && data.isMember("perf_payload_json"))) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Perf payload's json format is invalid. perf_payload_json not found.");
        return name();
    }

    // A marker at the top level wins over the one in the nested payload.
    Json::Value parsed;
    if (!hasMarker) {
        const Json::Value& text = data["perf_payload_json"];
        const bool valid = text.isString() && getJsonFromString(text.asCString(), parsed) && parsed.isObject() &&
                           parsed.isMember("marker_id");
        if (!valid) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Perf payload's json format is invalid.");
            return name();
        }
    }

    if (const auto marker = idIn(hasMarker ? data : parsed, "marker_id")) return std::to_string(*marker);
    __android_log_print(ANDROID_LOG_WARN, kLogTag, "KLX event's marker_id is not found.");
    return name();
}

}  // namespace Velo::OS::Telemetry
