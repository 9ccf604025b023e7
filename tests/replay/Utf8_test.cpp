#include "replay/Utf8.h"

#include <gtest/gtest.h>

#include <string>

#include "replay/Escape.h"

namespace Velo::OS::Telemetry::replay {

TEST(Utf8, AcceptsTheFirstAndLastOfEveryRangeAndRefusesTheirNeighbours) {
    const std::string wellFormed[] = {
        "\x7F",         "\xC2\x80",     "\xDF\xBF",         "\xE0\xA0\x80",     "\xED\x9F\xBF",
        "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", std::string(1, '\0'),
    };
    const std::string malformed[] = {// Continues nothing; overlong.
                                     "\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
                                     // Surrogates; beyond the last.
                                     "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF",
                                     // Cut short.
                                     "\xC2", "\xE1\x80", "\xF1\x80\x80", "\xC2\xC0", "\xE1\x80\x7F",
                                     "\xF1\x80\x80\xC0"};
    // At every offset, so that each also straddles the words that are skipped as a whole.
    for (size_t offset = 0; offset < 17; ++offset) {
        const std::string before(offset, 'a');
        const std::string after = "bcdefghijklmnopq";
        for (const std::string& text : wellFormed) {
            const std::string whole = before + text + after;
            EXPECT_EQ(findMalformedUtf8(whole), whole.size()) << escaped(text);
            const std::string_view cutShort(whole.data(), offset + text.size() - 1);
            EXPECT_EQ(findMalformedUtf8(cutShort), offset) << escaped(text);
            EXPECT_EQ(utf8Prefix(whole, cutShort.size()), before) << escaped(text);
        }
        for (const std::string& text : malformed) {
            EXPECT_EQ(findMalformedUtf8(before + text), offset) << escaped(text);
            EXPECT_EQ(findMalformedUtf8(before + text + after), offset) << escaped(text);
            EXPECT_EQ(utf8Prefix(before + text + after, offset + 1).size(), offset + 1) << escaped(text);
        }
    }
}

TEST(Escape, LeavesNothingThatATerminalWouldObey) {
    const std::pair<std::string, const char*> cases[] = {
        {"plain \xC3\xA9 \\ text", "plain \xC3\xA9 \\ text"},
        {"a\nb\tc\r", "a\\nb\\tc\\r"},
        {std::string(1, '\0') + "\x1B[31m\x1F \x7F~", "\\u0000\\u001b[31m\\u001f \\u007f~"},
        {"\xC2\x80\xC2\x9F\xC2\xA0", "\\u0080\\u009f\xC2\xA0"},
        {"\u200A\u200B\u200F\u2010\u2027\u2028\u202E\u202F\u205F\u2060\u2069\u206A\uFEFE\uFEFF\U0001202E",
         "\u200A\\u200b\\u200f\u2010\u2027\\u2028\\u202e\u202F\u205F\\u2060\\u2069\u206A\uFEFE\\ufeff\U0001202E"},
        {"\x80\xFF\xE2\x82", "\\x80\\xff\\xe2\\x82"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(escaped(text), expected);
}

}  // namespace Velo::OS::Telemetry::replay
