#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

/// The known word that may be meant by another one: the nearest by the restricted Damerau-Levenshtein distance, in
/// which swapping two neighbours counts as one edit and the case of ASCII letters as none. None if more than a third of
/// the letters would have to change, or for a word of more than 64 bytes, so that the cost is bounded. Of several that
/// are equally near, the first.
std::optional<std::string_view> nearestWord(std::string_view word, std::span<const std::string_view> known);

/// The words as an error lists them, each with a quote before and behind it: `a, b or c`.
std::string listed(std::span<const std::string_view> words, std::string_view quote = {});

/// The end of an error about an unknown word: `; did you mean "NAME"?`, or nothing if no known word is near.
std::string didYouMean(std::string_view word, std::span<const std::string_view> known);

}  // namespace Velo::OS::Telemetry::replay
