#pragma once

#include <json/reader.h>
#include <json/value.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// What is wrong with a text: the line, counted from 1, and the reason with the column, counted in bytes from 1.
struct JsonFault {
    size_t line;
    std::string text;
};

/// Whether the value was written as an integer: jsoncpp itself counts 1.0 as one too.
inline bool isIntegerLiteral(const Json::Value& value) {
    return value.type() == Json::intValue || value.type() == Json::uintValue;
}

/// Parses JSON as RFC 8259 has it and nothing more lenient. Beyond that a text is refused if a name occurs twice in an
/// object, if it nests too deep, or if a string escapes half a surrogate pair. Not to be used by two threads at once.
class StrictJson {
public:
    /// Arrays and objects inside one another, the outermost included.
    static constexpr unsigned kMaxDepth = 64;

    StrictJson();

    /// Parses text that a NUL follows in memory, and checks that it is UTF-8. Returns what is wrong with it.
    [[nodiscard]] std::optional<JsonFault> parse(std::string_view text, Json::Value& out);

private:
    std::unique_ptr<Json::CharReader> reader_;  // costly to build, so it is kept
    std::string report_;
};

}  // namespace Velo::OS::Telemetry::replay
