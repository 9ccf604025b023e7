#include "replay/StrictJson.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>

#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

namespace {

using Fault = std::optional<JsonFault>;

/// `kind` is what the text is not, "JSON" or "UTF-8".
JsonFault faultAt(std::string_view text, size_t offset, const std::string& kind, const std::string& reason = {}) {
    const std::string_view before = text.substr(0, offset);
    const auto newlines = std::count(before.begin(), before.end(), '\n');
    const size_t lineStart = newlines > 0 ? before.rfind('\n') + 1 : 0;
    const std::string column = std::to_string(offset - lineStart + 1);
    return {static_cast<size_t>(newlines) + 1, "not " + kind + ": column " + column + reason};
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20; }

bool skip(std::string_view& text, char c) {
    if (!text.starts_with(c)) return false;
    text.remove_prefix(1);
    return true;
}

bool skipDigits(std::string_view& text) {
    const size_t before = text.size();
    while (!text.empty() && isDigit(text.front())) text.remove_prefix(1);
    return text.size() < before;
}

/// RFC 8259, section 6.
bool isNumber(std::string_view text) {
    skip(text, '-');
    if (!skip(text, '0') && !skipDigits(text)) return false;
    if (skip(text, '.') && !skipDigits(text)) return false;
    if (skip(text, 'e') || skip(text, 'E')) {
        if (!skip(text, '+')) skip(text, '-');
        if (!skipDigits(text)) return false;
    }
    return text.empty();
}

/// Finds what jsoncpp lets pass or changes silently: a NUL, after which it ignores the rest; numbers such as "-", which
/// it takes for 0; control characters; halves of surrogate pairs. And the depth, past which it throws.
class LexicalCheck {
public:
    explicit LexicalCheck(std::string_view text) : text_(text) {}

    Fault run() {
        while (at_ < text_.size()) {
            if (Fault fault = checkToken(text_[at_])) return fault;
        }
        return std::nullopt;
    }

private:
    Fault checkToken(char c) {
        if (c == '"') return checkString();
        if (c == '-' || c == '+' || isDigit(c)) return checkNumber();
        if (c == '/') return fault(R"(comment, where a member named "//" is wanted)");  // jsoncpp refuses only some
        if ((c == '{' || c == '[') && ++depth_ > StrictJson::kMaxDepth) return tooDeep();
        if ((c == '}' || c == ']') && depth_ > 0) --depth_;
        if (isControl(c) && c != '\t' && c != '\r' && c != '\n') return fault("control character");
        ++at_;
        return std::nullopt;
    }

    JsonFault fault(const char* reason) const { return faultAt(text_, at_, "JSON", std::string(": ") + reason); }

    JsonFault tooDeep() const {
        return {fault("").line, "nested deeper than " + std::to_string(StrictJson::kMaxDepth) + " levels"};
    }

    Fault checkNumber() {
        const size_t end = std::min(text_.find_first_not_of("+-.0123456789Ee", at_), text_.size());
        if (!isNumber(text_.substr(at_, end - at_))) return fault("malformed number");
        at_ = end;
        return std::nullopt;
    }

    /// Stops behind the closing quote. A missing one is the parser's to report.
    Fault checkString() {
        for (++at_; at_ < text_.size(); ++at_) {
            const char c = text_[at_];
            if (c == '"') {
                ++at_;
                return std::nullopt;
            }
            if (isControl(c)) return fault("control character in a string");
            if (c == '\\' && !skipEscape()) return fault("half of a surrogate pair");
        }
        return std::nullopt;
    }

    /// Stops at the last character of the escape sequence, or of the two that make a surrogate pair.
    bool skipEscape() {
        const std::optional<uint16_t> unit = escapedUnit(at_);
        if (!unit) {
            ++at_;
            return true;
        }
        if (*unit >= 0xD800 && *unit <= 0xDFFF) {
            const uint16_t low = escapedUnit(at_ + kUnitLength).value_or(0);
            if (*unit >= 0xDC00 || low < 0xDC00 || low > 0xDFFF) return false;
            at_ += kUnitLength;
        }
        at_ += kUnitLength - 1;
        return true;
    }

    /// The UTF-16 code unit that the text escapes at the offset: \u and four digits.
    std::optional<uint16_t> escapedUnit(size_t offset) const {
        if (offset + kUnitLength > text_.size() || text_.substr(offset, 2) != "\\u") return std::nullopt;
        const char* end = text_.data() + offset + kUnitLength;
        uint16_t unit = 0;
        const auto parsed = std::from_chars(end - 4, end, unit, 16);
        return parsed.ptr == end ? std::optional(unit) : std::nullopt;
    }

    static constexpr size_t kUnitLength = 6;

    const std::string_view text_;
    size_t at_ = 0;
    unsigned depth_ = 0;
};

/// Where a line of jsoncpp's begins: it takes carriage returns for ends of lines too.
size_t startOfLine(std::string_view text, size_t line) {
    size_t start = 0;
    for (; line > 1; --line) {
        start = text.find_first_of("\r\n", start) + 1;
        if (text.substr(start - 1, 2) == "\r\n") ++start;
    }
    return start;
}

/// The first fault of a report such as "* Line 1, Column 12\n  Missing ':'\nSee Line 1, Column 14 for detail.\n".
JsonFault firstFault(std::string_view report, std::string_view text) {
    size_t line = 1;
    size_t column = 1;
    std::sscanf(std::string(report).c_str(), "* Line %zu, Column %zu", &line, &column);
    const size_t offset = std::min(startOfLine(text, line) + column - 1, text.size());

    report.remove_prefix(std::min(report.find("\n  ") + 3, report.size()));
    for (const char* next : {"\nSee Line ", "\n* Line "}) report = report.substr(0, report.find(next));
    if (report.ends_with('\n')) report.remove_suffix(1);
    return faultAt(text, offset, "JSON", ": " + std::string(report));
}

}  // namespace

StrictJson::StrictJson() {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["collectComments"] = false;
    builder["skipBom"] = false;
    // A lone scalar is JSON too; what to make of it is the caller's decision.
    builder["strictRoot"] = false;
    reader_.reset(builder.newCharReader());
}

Fault StrictJson::parse(std::string_view text, Json::Value& out) {
    const size_t malformed = findMalformedUtf8(text);
    if (malformed < text.size()) return faultAt(text, malformed, "UTF-8");
    if (Fault fault = LexicalCheck(text).run()) return fault;
    report_.clear();
    if (reader_->parse(text.data(), text.data() + text.size(), &out, &report_)) return std::nullopt;
    return firstFault(report_, text);
}

}  // namespace Velo::OS::Telemetry::replay
