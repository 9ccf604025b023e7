#include "replay/Escape.h"

#include <cstdint>

#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

namespace {

void appendHexByte(std::string& out, uint8_t byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    out += kDigits[byte >> 4];
    out += kDigits[byte & 0xF];
}

void appendControl(std::string& out, uint8_t codePoint) {
    switch (codePoint) {
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        default:
            out += "\\u00";
            appendHexByte(out, codePoint);
    }
}

bool isC0OrDelete(uint8_t byte) { return byte < 0x20 || byte == 0x7F; }

/// U+0080 to U+009F, which a terminal may obey just as it does the escape character.
bool isC1(std::string_view sequence) {
    return sequence.size() == 2 && sequence[0] == '\xC2' && static_cast<uint8_t>(sequence[1]) < 0xA0;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::string_view sequence = text.substr(0, utf8SequenceLength(text));
        const auto first = static_cast<uint8_t>(text[0]);
        if (sequence.empty()) {
            out += "\\x";
            appendHexByte(out, first);
        } else if (isC0OrDelete(first)) {
            appendControl(out, first);
        } else if (isC1(sequence)) {
            appendControl(out, static_cast<uint8_t>(sequence[1]));
        } else {
            out += sequence;
        }
        text.remove_prefix(sequence.empty() ? 1 : sequence.size());
    }
    return out;
}

}  // namespace Velo::OS::Telemetry::replay
