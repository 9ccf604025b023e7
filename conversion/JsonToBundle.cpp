#include "telemetry/JsonToBundle.h"

#include <json/reader.h>

#include <cstring>
#include <exception>
#include <memory>

#include "conversion/ArrayMarker.h"
#include "conversion/PerThread.h"
#include "conversion/PlatformText.h"

namespace Velo::OS::Telemetry {

using android::String16;
using android::os::PersistableBundle;

namespace {

struct DefaultReader {
    const std::unique_ptr<Json::CharReader> reader{Json::CharReaderBuilder().newCharReader()};
};

}  // namespace

bool getJsonFromString(const char* text, Json::Value& out) {
    try {
        return withThreadsOwn<DefaultReader>(
            [&](const DefaultReader& own) { return own.reader->parse(text, text + std::strlen(text), &out, nullptr); });
    } catch (const std::exception&) {
        // Nesting beyond the reader's limit is thrown, not returned.
        return false;
    }
}

bool convertJsonToBundle(const std::string& key, const Json::Value& value, PersistableBundle& bundle) {
    if (value.isNull()) return true;

    // Deliberate: a null or a child that cannot be stored is left out and its parent is stored all the same.
    const String16 key16 = toString16(key.c_str());
    if (value.isArray()) {
        PersistableBundle elements;
        elements.putBoolean(arrayMarker(), true);
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
        bundle.putString(key16, toString16(value.asCString()));
    } else {
        return false;
    }
    return true;
}

}  // namespace Velo::OS::Telemetry
