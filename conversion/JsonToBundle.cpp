#include "telemetry/JsonToBundle.h"

#include <json/reader.h>

#include <cstring>
#include <exception>
#include <memory>

#include "conversion/ArrayMarker.h"
#include "conversion/Nesting.h"
#include "conversion/PerThread.h"
#include "conversion/PlatformText.h"

namespace Velo::OS::Telemetry {

using android::String16;
using android::os::PersistableBundle;

namespace {

struct DefaultReader {
    const std::unique_ptr<Json::CharReader> reader{Json::CharReaderBuilder().newCharReader()};
};

bool put(const String16& key, const Json::Value& value, PersistableBundle& bundle);

String16 keyOf(const Json::Value::const_iterator& child, const Json::Value& container) {
    return toString16((container.isArray() ? std::to_string(child.index()) : child.name()).c_str());
}

/// A bundle of the elements or members. Deliberate: a null or a child that cannot be stored is left out and its parent
/// is stored all the same. On the heap, because of a stack its maps would take half a kilobyte at each level.
std::unique_ptr<PersistableBundle> bundleOf(const Json::Value& container) {
    auto bundle = std::make_unique<PersistableBundle>();
    if (container.isArray()) bundle->putBoolean(arrayMarker(), true);
    for (auto child = container.begin(); child != container.end(); ++child) {
        put(keyOf(child, container), *child, *bundle);
    }
    return bundle;
}

bool put(const String16& key, const Json::Value& value, PersistableBundle& bundle) {
    if (value.isNull()) return true;
    if (value.isArray() || value.isObject()) {
        bundle.putPersistableBundle(key, *bundleOf(value));
    } else if (value.isBool()) {
        bundle.putBoolean(key, value.asBool());
    } else if (value.isDouble()) {
        // Deliberate: every JSON number counts as a double, so one that went in as an int comes back as a real.
        bundle.putDouble(key, value.asDouble());
    } else if (value.isString()) {
        bundle.putString(key, toString16(value.asCString()));
    } else {
        return false;
    }
    return true;
}

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
    // The bundle stands around the value, and is to be readable.
    return !nestsDeeperThan(kMaxNesting - 1, value) && put(toString16(key.c_str()), value, bundle);
}

}  // namespace Velo::OS::Telemetry
