#include "telemetry/JsonToBundle.h"

#include <json/reader.h>

#include <cstring>
#include <exception>
#include <memory>

#include "conversion/ArrayMarker.h"

namespace Velo::OS::Telemetry {

using android::String16;
using android::os::PersistableBundle;

bool getJsonFromString(const char* text, Json::Value& out) {
    // A reader costs more to build than most texts to parse; parsing leaves nothing behind in it.
    thread_local const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    try {
        return reader->parse(text, text + std::strlen(text), &out, nullptr);
    } catch (const std::exception&) {
        // Nesting beyond the reader's limit is thrown, not returned.
        return false;
    }
}

bool convertJsonToBundle(const std::string& key, const Json::Value& value, PersistableBundle& bundle) {
    if (value.isNull()) return true;

    const String16 key16(key.c_str());
    if (value.isArray()) {
        PersistableBundle elements;
        elements.putBoolean(String16(kArrayMarker), true);
        for (Json::ArrayIndex i = 0; i < value.size(); ++i) convertJsonToBundle(std::to_string(i), value[i], elements);
        bundle.putPersistableBundle(key16, elements);
    } else if (value.isObject()) {
        PersistableBundle members;
        for (auto member = value.begin(); member != value.end(); ++member) {
            convertJsonToBundle(member.name(), *member, members);
        }
        bundle.putPersistableBundle(key16, members);
    } else if (value.isBool()) {
        bundle.putBoolean(key16, value.asBool());
    } else if (value.isDouble()) {
        // Deliberate: every JSON number counts as a double, so one that went in as an int comes back as a real.
        bundle.putDouble(key16, value.asDouble());
    } else if (value.isString()) {
        bundle.putString(key16, String16(value.asCString()));
    } else {
        return false;
    }
    return true;
}

}  // namespace Velo::OS::Telemetry
