// The serialisations of `TelemetryEventBundle`.

#include <android/log.h>

#include <locale>
#include <sstream>
#include <typeinfo>
#include <utility>

#include "conversion/ArrayMarker.h"
#include "conversion/CompactJson.h"
#include "event/JsonValueOf.h"
#include "processor/TraceSlice.h"
#include "telemetry/BundleToJson.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry {

const Json::Value& TelemetryEventBundle::convertedData() {
    if (!converted_) {
        Json::Value& target = data();
        if (hasArrayMarker(bundle_)) {
            // Conversion takes the marker out of the bundle it is given, and the event's own bundle never changes.
            android::os::PersistableBundle copy(bundle_);
            conversionSucceeded_ = convertBundleToJson(copy, target);
        } else {
            conversionSucceeded_ = convertBundleToJson(bundle_, target);
        }
        converted_ = true;
    }
    return std::as_const(*this).data();
}

Json::Value TelemetryEventBundle::getJsonValue() { return convertedData(); }

const Json::Value& jsonValueOf(TelemetryEvent& event, Json::Value& copy) {
    if (typeid(event) == typeid(TelemetryEventBundle)) return static_cast<TelemetryEventBundle&>(event).convertedData();
    return copy = event.getJsonValue();
}

const std::string& TelemetryEventBundle::getJsonString() {
    const TraceSlice slice("getJsonString");
    if (cachedJson_) return *cachedJson_;

    const Json::Value& converted = convertedData();
    if (conversionSucceeded_) {
        cachedJson_ = toCompactJson(converted);
    } else {
        __android_log_print(ANDROID_LOG_WARN, "TelemetryService",
                            "Event [name: %s] wasn't successfully converted to json.", name().c_str());
        cachedJson_.emplace();
    }
    return *cachedJson_;
}

std::string TelemetryEventBundle::getJsonBatchHeaderString() {
    std::string header = "{";
    auto property = properties_.cbegin();
    const auto addProperty = [&] {
        appendQuoted(header, property->first);
        header += ':';
        appendQuoted(header, property->second);
        header += ',';
        ++property;
    };
    // Members go by ascending key, and a property that bears the name of one of these two gives way to it.
    const auto addPropertiesBefore = [&](std::string_view key) {
        while (property != properties_.cend() && property->first < key) addProperty();
        if (property != properties_.cend() && property->first == key) ++property;
    };
    addPropertiesBefore("app_id");
    header.append("\"app_id\":").append(std::to_string(appId())) += ',';
    addPropertiesBefore("app_version");
    header += "\"app_version\":";
    appendQuoted(header, appVersion());
    header += ',';
    while (property != properties_.cend()) addProperty();
    header.back() = '}';
    return header;
}

std::string TelemetryEventBundle::getDebugString() {
    std::ostringstream line;
    line.imbue(std::locale::classic());
    // Deliberate: no comma before " uid: ".
    line << "name: " << name() << " uid: " << uid() << ", time: " << time() << ", size: " << size()
         << ", priority: " << (priority() ? 1 : 0) << ", data: " << getJsonString()
         << ", header: " << getJsonBatchHeaderString();
    return line.str();
}

size_t TelemetryEventBundle::size() const {
    const size_t dataSize = data().size();
    if (converted_ && conversionSucceeded_) return dataSize;
    return bundle_.size() + dataSize;
}

}  // namespace Velo::OS::Telemetry
