#include "replay/BundleFromJson.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace Velo::OS::Telemetry::replay {

namespace {

using android::String16;
using android::os::PersistableBundle;

/// What is wrong, and where: the path grows from its end as the calls return.
struct Fault {
    std::string path;
    std::string reason;
};
using MaybeFault = std::optional<Fault>;

MaybeFault within(const std::string& step, MaybeFault fault) {
    if (fault) fault->path.insert(0, step);
    return fault;
}

String16 toString16(std::string_view utf8) { return String16(utf8.data(), utf8.size()); }

std::string_view stringOf(const Json::Value& string) {
    const char* begin = nullptr;
    const char* end = nullptr;
    string.getString(&begin, &end);
    return {begin, static_cast<size_t>(end - begin)};
}

bool isVectorOfStrings(const Json::Value& array) {
    return !array.empty() && std::all_of(array.begin(), array.end(), [](const auto& item) { return item.isString(); });
}

/// Writes values under their keys. `source` is the text from which they were parsed.
class BundleWriter {
public:
    explicit BundleWriter(std::string_view source) : source_(source) {}

    MaybeFault putMembers(const Json::Value& object, PersistableBundle& bundle) const {
        for (auto member = object.begin(); member != object.end(); ++member) {
            const char* end = nullptr;
            const char* begin = member.memberName(&end);
            const std::string_view name(begin, static_cast<size_t>(end - begin));
            MaybeFault fault = putNamed(name, *member, bundle);
            if (fault) return within("." + std::string(name), std::move(fault));
        }
        return std::nullopt;
    }

private:
    MaybeFault putNamed(std::string_view name, const Json::Value& value, PersistableBundle& bundle) const {
        // To the platform's order of keys, "a" and "a" with a NUL after it are the same key.
        if (name.find('\0') != std::string_view::npos) return Fault{"", "a key of a bundle cannot hold a NUL"};
        return putMember(toString16(name), value, bundle);
    }

    MaybeFault putMember(const String16& key, const Json::Value& value, PersistableBundle& bundle) const {
        if (!value.isArray() || !isVectorOfStrings(value)) return putElement(key, value, bundle);
        std::vector<String16> strings;
        strings.reserve(value.size());
        for (const Json::Value& string : value) strings.push_back(toString16(stringOf(string)));
        bundle.putStringVector(key, strings);
        return std::nullopt;
    }

    /// Like a member, but never a string vector: the reader of bundles drops those inside arrays.
    MaybeFault putElement(const String16& key, const Json::Value& value, PersistableBundle& bundle) const {
        switch (value.type()) {
            case Json::nullValue:
                return Fault{"", "null cannot be held by a bundle"};
            case Json::booleanValue:
                bundle.putBoolean(key, value.asBool());
                return std::nullopt;
            case Json::stringValue:
                bundle.putString(key, toString16(stringOf(value)));
                return std::nullopt;
            case Json::intValue:
            case Json::uintValue:
            case Json::realValue:
                return putNumber(key, value, bundle);
            case Json::arrayValue:
            case Json::objectValue:
                return putNested(key, value, bundle);
        }
        return std::nullopt;
    }

    MaybeFault putNumber(const String16& key, const Json::Value& number, PersistableBundle& bundle) const {
        if (number.type() == Json::realValue && hasFractionOrExponent(number)) {
            bundle.putDouble(key, number.asDouble());
            return std::nullopt;
        }
        // jsoncpp makes a real of an integer that 64 bits cannot hold.
        if (number.type() == Json::realValue || !number.isInt64()) {
            return Fault{"", "integer does not fit a signed 64-bit integer"};
        }
        if (number.isInt()) {
            bundle.putInt(key, number.asInt());
        } else {
            bundle.putLong(key, number.asInt64());
        }
        return std::nullopt;
    }

    bool hasFractionOrExponent(const Json::Value& number) const {
        if (std::abs(number.asDouble()) < 0x1p63) return true;  // an integer so small is no real
        const auto start = static_cast<size_t>(number.getOffsetStart());
        const auto limit = static_cast<size_t>(number.getOffsetLimit());
        return source_.substr(start, limit - start).find_first_of(".eE") != std::string_view::npos;
    }

    MaybeFault putNested(const String16& key, const Json::Value& value, PersistableBundle& bundle) const {
        PersistableBundle nested;
        MaybeFault fault = value.isArray() ? putElements(value, nested) : putMembers(value, nested);
        if (!fault) bundle.putPersistableBundle(key, nested);
        return fault;
    }

    MaybeFault putElements(const Json::Value& array, PersistableBundle& bundle) const {
        bundle.putBoolean(String16("utl_array_of_bundles"), true);
        for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
            const std::string index = std::to_string(i);
            MaybeFault fault = putElement(toString16(index), array[i], bundle);
            if (fault) return within("[" + index + "]", std::move(fault));
        }
        return std::nullopt;
    }

    const std::string_view source_;
};

}  // namespace

std::optional<std::string> bundleFromJson(const Json::Value& object, std::string_view source, std::string_view path,
                                          PersistableBundle& bundle) {
    const MaybeFault fault = BundleWriter(source).putMembers(object, bundle);
    if (!fault) return std::nullopt;
    return std::string(path) + fault->path + ": " + fault->reason;
}

}  // namespace Velo::OS::Telemetry::replay
