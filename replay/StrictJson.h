#pragma once

#include <json/reader.h>
#include <json/value.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// Parses JSON as RFC 8259 has it and nothing more lenient. Beyond that a text is refused if a name occurs twice in an
/// object, if it nests too deep, or if a string escapes half a surrogate pair. Not to be used by two threads at once.
class StrictJson {
public:
    /// Arrays and objects inside one another, the outermost included.
    static constexpr unsigned kMaxDepth = 64;

    StrictJson();

    /// Parses UTF-8 text that a NUL follows in memory. Returns what is wrong with it, columns counted in bytes from 1.
    [[nodiscard]] std::optional<std::string> parse(std::string_view text, Json::Value& out);

private:
    std::unique_ptr<Json::CharReader> reader_;  // costly to build, so it is kept
    std::string report_;
};

}  // namespace Velo::OS::Telemetry::replay
