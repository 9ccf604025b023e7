#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// Bytes of the well-formed UTF-8 sequence (RFC 3629) that the text begins with; 0 if it begins with none.
size_t utf8SequenceLength(std::string_view text);

/// Offset of the first byte that belongs to no well-formed sequence; the text's size if there is none.
size_t findMalformedUtf8(std::string_view text);

/// The start of the text, of at most so many bytes, cut between two characters.
std::string_view utf8Prefix(std::string_view text, size_t maxBytes);

/// The text; of a longer one its start, as above, and "..." behind it.
std::string shortened(std::string_view text, size_t maxBytes);

}  // namespace Velo::OS::Telemetry::replay
