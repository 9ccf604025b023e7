// The serialisations of `TelemetryEventBundle`.

#include <android/log.h>

#include <cstring>
#include <locale>
#include <sstream>
#include <utility>

#include "conversion/ArrayMarker.h"
#include "conversion/CompactJson.h"
#include "conversion/Nesting.h"
#include "event/JsonValueOf.h"
#include "processor/TraceSlice.h"
#include "telemetry/BundleToJson.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry {

namespace {

constexpr char kAppId[] = "app_id";
constexpr char kAppVersion[] = "app_version";

/// The pointer to its virtual functions, with which an object begins in the Itanium C++ ABI.
const void* classOf(const TelemetryEvent& event) {
    const void* functions = nullptr;
    std::memcpy(&functions, static_cast<const void*>(&event), sizeof(functions));
    return functions;
}

}  // namespace

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
    // A service may be compiled without type information, so that `typeid` must not be asked about its classes.
    static const void* const ownClass = classOf(TelemetryEventBundle({}, 0, false));
    if (classOf(event) == ownClass) return static_cast<TelemetryEventBundle&>(event).convertedData();
    copy = event.getJsonValue();
    refuseTooDeep(event.name(), copy);
    return copy;
}

bool refuseTooDeep(const std::string& name, Json::Value& data) {
    if (!nestsDeeperThan(kMaxNesting, data)) return false;
    __android_log_print(ANDROID_LOG_WARN, "TelemetryService",
                        "Data of event [name: %s] is nested too deep and was left out.", name.c_str());
    dismantle(data);
    return true;
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

/// Written member by member, which is cheaper than making a value of it. Members go by ascending name, and a property
/// that bears the name of one of the two others gives way to it.
std::string TelemetryEventBundle::getJsonBatchHeaderString() {
    std::string header = "{";
    const auto addName = [&](const std::string& name) {
        if (header.size() > 1) header += ',';
        appendQuoted(header, name);
        header += ':';
    };
    const auto addProperties = [&](auto property, auto end) {
        for (; property != end; ++property) {
            addName(property->first);
            appendQuoted(header, property->second);
        }
    };
    addProperties(properties_.begin(), properties_.lower_bound(kAppId));
    addName(kAppId);
    header += std::to_string(appId());
    addProperties(properties_.upper_bound(kAppId), properties_.lower_bound(kAppVersion));
    addName(kAppVersion);
    appendQuoted(header, appVersion());
    addProperties(properties_.upper_bound(kAppVersion), properties_.end());
    header += '}';
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
