#include "replay/FastLineReader.h"

#include <simdjson.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

namespace Velo::OS::Telemetry::replay {

namespace {

namespace dom = simdjson::dom;

/// A longer line is left to `StrictJson`: the parser's buffers take fifteen times the longest line, and stay.
constexpr size_t kMaxLine = 64UL << 10U;

/// Far within the limit of `StrictJson`, so that it does not matter which of the levels the two count.
constexpr size_t kMaxDepth = 32;

bool fill(const dom::element& from, Json::Value& to);

bool fillArray(const dom::array& from, Json::Value& to) {
    to = Json::Value(Json::arrayValue);
    for (const dom::element element : from) {
        if (!fill(element, to.append(Json::Value()))) return false;
    }
    return true;
}

bool fillObject(const dom::object& from, Json::Value& to) {
    to = Json::Value(Json::objectValue);
    for (const dom::key_value_pair member : from) {
        if (!fill(member.value, *to.demand(member.key.begin(), member.key.end()))) return false;
    }
    return to.size() == from.size();  // fewer if a name occurs twice
}

/// Integers that 64 bits cannot hold are reals as well, and whoever must tell them from others asks for their text.
bool fillReal(double from, Json::Value& to) {
    to = from;
    return std::abs(from) < 0x1p63;
}

/// False if only `StrictJson` can tell what to make of the value.
bool fill(const dom::element& from, Json::Value& to) {
    switch (from.type()) {
        case dom::element_type::ARRAY:
            return fillArray(from.get_array().value_unsafe(), to);
        case dom::element_type::OBJECT:
            return fillObject(from.get_object().value_unsafe(), to);
        case dom::element_type::INT64:
            to = Json::Int64{from.get_int64().value_unsafe()};
            return true;
        case dom::element_type::UINT64:
            to = Json::UInt64{from.get_uint64().value_unsafe()};
            return true;
        case dom::element_type::DOUBLE:
            return fillReal(from.get_double().value_unsafe(), to);
        case dom::element_type::STRING: {
            const std::string_view text = from.get_string().value_unsafe();
            to = Json::Value(text.begin(), text.end());
            return true;
        }
        case dom::element_type::BOOL:
            to = from.get_bool().value_unsafe();
            return true;
        case dom::element_type::NULL_VALUE:
            return true;
    }
    return false;
}

bool take(const dom::element& from, std::optional<std::string>& to) {
    std::string_view text;
    if (from.get_string().get(text)) return false;
    to = text;
    return true;
}

template <class Integer>
requires std::is_integral_v<Integer>
bool take(const dom::element& from, std::optional<Integer>& to) {
    int64_t number = 0;
    if (from.get_int64().get(number)) return false;
    to = static_cast<Integer>(number);
    return *to == number;
}

bool take(const dom::element& from, std::optional<bool>& to) {
    bool value = false;
    if (from.get_bool().get(value)) return false;
    to = value;
    return true;
}

bool take(const dom::element& from, std::optional<Json::Value>& to) {
    dom::object object;
    return !from.get_object().get(object) && fillObject(object, to.emplace());
}

bool take(const dom::key_value_pair& member, LineMembers& to) {
    const auto [name, value] = member;
    if (name == "name") return !to.name && take(value, to.name);
    if (name == "uid") return !to.uid && take(value, to.uid);
    if (name == "data") return !to.data && take(value, to.data);
    if (name == "bundle") return !to.bundle && take(value, to.bundle);
    if (name == "format") return !to.format && take(value, to.format);
    if (name == "atom_id") return !to.atomId && take(value, to.atomId);
    if (name == "realtime") return !to.realtime && take(value, to.realtime);
    return false;
}

}  // namespace

struct FastLineReader::Parser {
    dom::parser parser{kMaxLine};
};

FastLineReader::FastLineReader() : parser_(std::make_unique<Parser>()) {
    constexpr size_t kUsualLine = 4096;  // for longer ones the parser grows by itself
    if (parser_->parser.allocate(kUsualLine, kMaxDepth)) parser_.reset();
}

FastLineReader::~FastLineReader() = default;

std::optional<LineMembers> FastLineReader::read(std::string_view line) {
    if (!parser_) return std::nullopt;
    // Versions of the parser differ in what they make of a byte order mark and of half of a surrogate pair.
    if (!line.starts_with('{') || line.find("\\u") != std::string_view::npos) return std::nullopt;

    dom::object object;
    if (parser_->parser.parse(line.data(), line.size()).get_object().get(object)) return std::nullopt;
    std::optional<LineMembers> members(std::in_place);
    for (const dom::key_value_pair member : object) {
        if (!take(member, *members)) return std::nullopt;
    }
    if (!members->name) return std::nullopt;
    return members;
}

}  // namespace Velo::OS::Telemetry::replay
