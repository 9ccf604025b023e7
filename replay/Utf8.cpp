#include "replay/Utf8.h"

#include <cstdint>
#include <cstring>

namespace Velo::OS::Telemetry::replay {

namespace {

/// What may follow a lead byte: so many bytes in all, the second of them in this range.
struct SequenceForm {
    size_t length;
    uint8_t secondMin;
    uint8_t secondMax;
};

/// The range of the second byte keeps out overlong forms, surrogates and everything beyond U+10FFFF.
SequenceForm formOf(uint8_t lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {2, 0x80, 0xBF};
    if (lead == 0xE0) return {3, 0xA0, 0xBF};
    if (lead == 0xED) return {3, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {3, 0x80, 0xBF};
    if (lead == 0xF0) return {4, 0x90, 0xBF};
    if (lead >= 0xF1 && lead <= 0xF3) return {4, 0x80, 0xBF};
    if (lead == 0xF4) return {4, 0x80, 0x8F};
    return {0, 0, 0};
}

uint8_t byteAt(std::string_view text, size_t index) { return static_cast<uint8_t>(text[index]); }

/// Offset of the first byte at or after `offset` that may not be ASCII: it lies in the word returned.
size_t skipAsciiWords(std::string_view text, size_t offset) {
    uint64_t word = 0;
    for (; offset + sizeof(word) <= text.size(); offset += sizeof(word)) {
        std::memcpy(&word, text.data() + offset, sizeof(word));
        if (word & 0x8080808080808080U) break;
    }
    return offset;
}

}  // namespace

size_t utf8SequenceLength(std::string_view text) {
    if (text.empty()) return 0;
    if (byteAt(text, 0) < 0x80) return 1;

    const SequenceForm form = formOf(byteAt(text, 0));
    if (form.length == 0 || text.size() < form.length) return 0;
    if (byteAt(text, 1) < form.secondMin || byteAt(text, 1) > form.secondMax) return 0;
    for (size_t i = 2; i < form.length; ++i) {
        if ((byteAt(text, i) & 0xC0) != 0x80) return 0;
    }
    return form.length;
}

size_t findMalformedUtf8(std::string_view text) {
    size_t offset = skipAsciiWords(text, 0);
    while (offset < text.size()) {
        const size_t length = utf8SequenceLength(text.substr(offset));
        if (length == 0) return offset;
        offset += length;
        if (length == 1) offset = skipAsciiWords(text, offset);
    }
    return offset;
}

std::string_view utf8Prefix(std::string_view text, size_t maxBytes) {
    if (text.size() <= maxBytes) return text;
    size_t start = maxBytes;  // of the character that the cut falls into, if it falls into one
    while (start > 0 && maxBytes - start < 3 && (byteAt(text, start) & 0xC0) == 0x80) --start;
    const bool isWithin = start + utf8SequenceLength(text.substr(start)) > maxBytes;
    return text.substr(0, isWithin ? start : maxBytes);
}

std::string shortened(std::string_view text, size_t maxBytes) {
    return text.size() <= maxBytes ? std::string(text) : std::string(utf8Prefix(text, maxBytes)) + "...";
}

}  // namespace Velo::OS::Telemetry::replay
