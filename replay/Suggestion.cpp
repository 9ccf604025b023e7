#include "replay/Suggestion.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr size_t kMaxLength = 64;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isSame(char a, char b) { return lower(a) == lower(b); }

/// Of words that are no longer than `kMaxLength`.
size_t distance(std::string_view a, std::string_view b) {
    // Row i is how far the first i bytes of `a` are from each start of `b`; it hangs on the two rows before it.
    std::array<std::array<size_t, kMaxLength + 1>, 3> rows{};
    for (size_t j = 0; j <= b.size(); ++j) rows[0][j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        const auto& last = rows[(i + 2) % 3];
        const auto& lastButOne = rows[(i + 1) % 3];
        auto& row = rows[i % 3];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replaced = last[j - 1] + (isSame(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            const bool isSwap = i > 1 && j > 1 && isSame(a[i - 1], b[j - 2]) && isSame(a[i - 2], b[j - 1]);
            if (isSwap) row[j] = std::min(row[j], lastButOne[j - 2] + 1);
        }
    }
    return rows[a.size() % 3][b.size()];
}

}  // namespace

std::optional<std::string_view> nearestWord(std::string_view word, std::span<const std::string_view> known) {
    std::optional<std::string_view> nearest;
    size_t least = kMaxLength;
    for (const std::string_view candidate : known) {
        const auto [shorter, longer] = std::minmax({word.size(), candidate.size()});
        if (longer > kMaxLength) continue;
        const size_t bound = std::max<size_t>(longer / 3, 1);
        if (longer - shorter > bound) continue;
        const size_t edits = distance(word, candidate);
        if (edits > bound || edits >= shorter || edits >= least) continue;
        nearest = candidate;
        least = edits;
    }
    return nearest;
}

std::string listed(std::span<const std::string_view> words, std::string_view quote) {
    std::string list;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0) list += i + 1 < words.size() ? ", " : " or ";
        list.append(quote).append(words[i]).append(quote);
    }
    return list;
}

std::string didYouMean(std::string_view word, std::span<const std::string_view> known) {
    const std::optional<std::string_view> nearest = nearestWord(word, known);
    return nearest ? "; did you mean \"" + std::string(*nearest) + "\"?" : std::string();
}

}  // namespace Velo::OS::Telemetry::replay
