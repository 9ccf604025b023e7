#include "conversion/CompactJson.h"

#include <json/writer.h>

#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

#include "conversion/JsonMember.h"
#include "conversion/PerThread.h"

namespace Velo::OS::Telemetry {

namespace {

std::string writtenByJsoncpp(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

/// Eight bytes, each with this value.
constexpr uint64_t eightTimes(uint8_t byte) { return 0x0101010101010101U * byte; }

/// Whether any of the eight bytes is one that jsoncpp escapes: a control character, a quotation mark, a backslash or a
/// part of a character beyond ASCII.
constexpr bool needEscape(uint64_t bytes) {
    // A byte below the one that is subtracted has its highest bit set afterwards, which it had not before.
    const auto isBelow = [](uint64_t each, uint8_t limit) { return (each - eightTimes(limit)) & ~each; };
    const uint64_t found =
        bytes | isBelow(bytes, 0x20) | isBelow(bytes ^ eightTimes('"'), 1) | isBelow(bytes ^ eightTimes('\\'), 1);
    return (found & eightTimes(0x80)) != 0;
}

bool isPlain(std::string_view text) {
    uint64_t bytes = 0;
    for (; text.size() >= sizeof(bytes); text.remove_prefix(sizeof(bytes))) {
        std::memcpy(&bytes, text.data(), sizeof(bytes));
        if (needEscape(bytes)) return false;
    }
    bytes = eightTimes(' ');
    std::memcpy(&bytes, text.data(), text.size());
    return !needEscape(bytes);
}

/// A NUL follows the text in memory.
void appendQuotedText(std::string& json, std::string_view text) {
    if (isPlain(text)) {
        json.append(1, '"').append(text).append(1, '"');
    } else if (text.find('\0') == std::string_view::npos) {
        json += Json::valueToQuotedString(text.data());
    } else {
        json += writtenByJsoncpp(Json::Value(text.data(), text.data() + text.size()));
    }
}

/// Writes what jsoncpp's own writer would for a fraction of the work: that one copies the names of an object's members,
/// looks each of them up again and sends every piece through a stream.
class CompactWriter {
public:
    std::string write(const Json::Value& value) {
        text_.clear();
        // An exact copy, so that the cached text of an event wastes nothing and the buffer need not grow again.
        std::string text = append(value) ? text_ : writtenByJsoncpp(value);
        if (text_.capacity() > kKeptCapacity) text_ = std::string();
        return text;
    }

private:
    /// Bytes that a thread keeps; a single huge event must not hold memory for ever.
    static constexpr size_t kKeptCapacity = 65536;

    /// False if there is a comment in the value: where it goes is jsoncpp's to say.
    bool append(const Json::Value& value) {
        if (hasComment(value)) return false;
        switch (value.type()) {
            case Json::nullValue:
                text_ += "null";
                break;
            case Json::intValue:
                appendInteger(value.asLargestInt());
                break;
            case Json::uintValue:
                appendInteger(value.asLargestUInt());
                break;
            case Json::realValue:
                text_ += Json::valueToString(value.asDouble());
                break;
            case Json::stringValue:
                appendQuotedText(text_, textOf(value));
                break;
            case Json::booleanValue:
                text_ += value.asBool() ? "true" : "false";
                break;
            case Json::arrayValue:
                return appendArray(value);
            case Json::objectValue:
                return appendObject(value);
        }
        return true;
    }

    static bool hasComment(const Json::Value& value) {
        return value.hasComment(Json::commentBefore) || value.hasComment(Json::commentAfterOnSameLine) ||
               value.hasComment(Json::commentAfter);
    }

    template <typename Integer>
    void appendInteger(Integer number) {
        char digits[24];
        text_.append(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
    }

    bool appendArray(const Json::Value& array) {
        text_ += '[';
        for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
            if (i > 0) text_ += ',';
            if (!append(array[i])) return false;
        }
        text_ += ']';
        return true;
    }

    bool appendObject(const Json::Value& object) {
        text_ += '{';
        const auto first = object.begin();
        const auto end = object.end();
        for (auto member = first; member != end; ++member) {
            if (member != first) text_ += ',';
            appendQuotedText(text_, nameOf(member));
            text_ += ':';
            if (!append(*member)) return false;
        }
        text_ += '}';
        return true;
    }

    std::string text_;
};

}  // namespace

std::string toCompactJson(const Json::Value& value) {
    return withThreadsOwn<CompactWriter>([&](CompactWriter& writer) { return writer.write(value); });
}

void appendQuoted(std::string& json, const std::string& text) { appendQuotedText(json, text); }

}  // namespace Velo::OS::Telemetry
