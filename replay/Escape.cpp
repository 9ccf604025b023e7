#include "replay/Escape.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

namespace {

struct Range {
    uint32_t first, last;
};

// C0; DEL and C1, which a terminal may obey just as it does the escape character; what has no width or changes the
// direction of the text, and so makes it pass for another. The page of a run (report/report.js) escapes the same.
constexpr Range kEscaped[] = {{0x0000, 0x001F}, {0x007F, 0x009F}, {0x200B, 0x200F},
                              {0x2028, 0x202E}, {0x2060, 0x2069}, {0xFEFF, 0xFEFF}};

bool isEscaped(uint32_t codePoint) {
    return std::any_of(std::begin(kEscaped), std::end(kEscaped),
                       [&](const Range& range) { return codePoint >= range.first && codePoint <= range.last; });
}

/// Of a well-formed sequence.
uint32_t codePointOf(std::string_view sequence) {
    constexpr uint8_t kLeadBits[] = {0x7F, 0x1F, 0x0F, 0x07};  // by the length
    uint32_t codePoint = static_cast<uint8_t>(sequence[0]) & kLeadBits[sequence.size() - 1];
    for (const char c : sequence.substr(1)) codePoint = codePoint << 6 | (static_cast<uint8_t>(c) & 0x3F);
    return codePoint;
}

void appendHex(std::string& out, uint32_t number, int digits) {
    while (digits-- > 0) out += "0123456789abcdef"[number >> (4 * digits) & 0xF];
}

void appendEscape(std::string& out, uint32_t codePoint) {
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
            out += "\\u";
            appendHex(out, codePoint, 4);
    }
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::string_view sequence = text.substr(0, utf8SequenceLength(text));
        if (sequence.empty()) {
            out += "\\x";
            appendHex(out, static_cast<uint8_t>(text[0]), 2);
        } else if (const uint32_t codePoint = codePointOf(sequence); isEscaped(codePoint)) {
            appendEscape(out, codePoint);
        } else {
            out += sequence;
        }
        text.remove_prefix(sequence.empty() ? 1 : sequence.size());
    }
    return out;
}

}  // namespace Velo::OS::Telemetry::replay
