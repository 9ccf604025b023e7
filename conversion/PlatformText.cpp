#include "conversion/PlatformText.h"

#include <utils/String8.h>

#include <iterator>

namespace Velo::OS::Telemetry {

using android::String16;
using android::String8;

String16 toString16(const char* text) {
    char16_t units[64];
    for (size_t length = 0; length < std::size(units); ++length) {
        const auto byte = static_cast<unsigned char>(text[length]);
        if (byte == 0) return String16(units, length);
        if (byte > 0x7F) break;
        units[length] = byte;
    }
    return String16(text);
}

void toUtf8(const String16& text, std::string& out) {
    const size_t length = text.size();
    const char16_t* const units = text;  // what a text calls this differs from one version of the platform to the next
    out.resize(length);
    for (size_t i = 0; i < length; ++i) {
        const char16_t unit = units[i];
        if (unit == 0) return out.resize(i);
        if (unit > 0x7F) {
            out = String8(text).c_str();
            return;
        }
        out[i] = static_cast<char>(unit);
    }
}

}  // namespace Velo::OS::Telemetry
