// The serialisations of `TelemetryEventBundle`.

#include <android/log.h>

#include <locale>
#include <sstream>

#include "conversion/ArrayMarker.h"
#include "conversion/CompactJson.h"
#include "processor/TraceSlice.h"
#include "telemetry/BundleToJson.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry {

const Json::Value& TelemetryEventBundle::convertedData() {
    if (!converted_) {
        Json::Value& target = document_["data"];
        if (hasArrayMarker(bundle_)) {
            // Conversion takes the marker out of the bundle it is given, and the event's own bundle never changes.
            android::os::PersistableBundle copy(bundle_);
            conversionSucceeded_ = convertBundleToJson(copy, target);
        } else {
            conversionSucceeded_ = convertBundleToJson(bundle_, target);
        }
        converted_ = true;
    }
    return data();
}

Json::Value TelemetryEventBundle::getJsonValue() { return convertedData(); }

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
    Json::Value header(Json::objectValue);
    for (const auto& [key, value] : properties_) header[key] = value;
    header["app_id"] = static_cast<Json::Int64>(appId());
    header["app_version"] = appVersion();
    return toCompactJson(header);
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
