#pragma once

#include <binder/PersistableBundle.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "fuzz/Lines.h"

namespace Velo::OS::Telemetry::fuzz {

/// Reads a bundle from any bytes, in a form in which people can write seeds: "TYPE KEY VALUE" in each line.
///
///     b warm 1         boolean; i is an int, l a long, d a double ("nan" and "inf" too), s a string
///     S tags a,b       string vector; B, I, L and D are the others
///     { window         nested bundle, up to the line "}"
///
/// In keys and strings a backslash and four hexadecimal digits stand for a UTF-16 code unit. Nothing is an error: other
/// lines are passed over, and a number that is none is 0.
class BundleText {
public:
    using Bundle = android::os::PersistableBundle;
    using String16 = android::String16;

    explicit BundleText(std::string_view text) : rest_(text) {}

    Bundle read(unsigned depth = 1) {
        Bundle bundle;
        while (!rest_.empty()) {
            std::string_view line = takeUntil('\n', rest_);
            if (line == "}") break;
            const std::string_view type = takeUntil(' ', line);
            const String16 key = text16(takeUntil(' ', line));
            if (type == "{" && depth < kMaxDepth) bundle.putPersistableBundle(key, read(depth + 1));
            if (type.size() == 1) put(type.front(), key, line, bundle);
        }
        return bundle;
    }

private:
    /// Deep enough for every form; what is deeper is tested in Nesting.
    static constexpr unsigned kMaxDepth = 8;

    static void put(char type, const String16& key, std::string_view value, Bundle& bundle) {
        if (type == 'b') bundle.putBoolean(key, truth(value));
        if (type == 'i') bundle.putInt(key, number<int32_t>(value));
        if (type == 'l') bundle.putLong(key, number<int64_t>(value));
        if (type == 'd') bundle.putDouble(key, number<double>(value));
        if (type == 's') bundle.putString(key, text16(value));
        if (type == 'B') bundle.putBooleanVector(key, list(value, truth));
        if (type == 'I') bundle.putIntVector(key, list(value, number<int32_t>));
        if (type == 'L') bundle.putLongVector(key, list(value, number<int64_t>));
        if (type == 'D') bundle.putDoubleVector(key, list(value, number<double>));
        if (type == 'S') bundle.putStringVector(key, list(value, text16));
    }

    static bool truth(std::string_view text) { return text == "1"; }

    template <typename Number>
    static Number number(std::string_view text) {
        Number value{};
        if constexpr (std::is_floating_point_v<Number>) {
            value = std::strtod(std::string(text).c_str(), nullptr);  // libc++ has no such from_chars
        } else {
            std::from_chars(text.data(), text.data() + text.size(), value);
        }
        return value;
    }

    static String16 text16(std::string_view text) {
        std::u16string units;
        while (!text.empty()) {
            uint16_t unit = 0;
            const char* const end = text.data() + 5;
            const bool isEscape =
                text.size() >= 5 && text.front() == '\\' && std::from_chars(end - 4, end, unit, 16).ptr == end;
            units += isEscape ? static_cast<char16_t>(unit) : static_cast<unsigned char>(text.front());
            text.remove_prefix(isEscape ? 5 : 1);
        }
        return String16(units.data(), units.size());
    }

    template <typename Value>
    static std::vector<Value> list(std::string_view text, Value (*read)(std::string_view)) {
        std::vector<Value> values;
        while (!text.empty()) values.push_back(read(takeUntil(',', text)));
        return values;
    }

    std::string_view rest_;
};

/// Whether a key or string of the bundle may hold a NUL, where the name that it becomes ends: two keys may become one.
inline bool mayHoldNul(std::string_view text) {
    return text.find('\0') != std::string_view::npos || text.find("\\0000") != std::string_view::npos;
}

}  // namespace Velo::OS::Telemetry::fuzz
