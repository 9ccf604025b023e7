#include "replay/Glob.h"

#include <algorithm>
#include <optional>

#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

bool matchesGlob(std::string_view pattern, std::string_view text) {
    // Where to go on if the rest does not fit: the last star takes one byte more.
    std::optional<std::string_view> afterStar;
    std::string_view retry;
    while (!text.empty() || !pattern.empty()) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            afterStar = pattern;
            retry = text;
        } else if (pattern.starts_with('?') && !text.empty()) {
            pattern.remove_prefix(1);
            text.remove_prefix(std::max<size_t>(utf8SequenceLength(text), 1));
        } else if (!pattern.empty() && !text.empty() && pattern.front() == text.front()) {
            pattern.remove_prefix(1);
            text.remove_prefix(1);
        } else {
            if (!afterStar || retry.empty()) return false;
            retry.remove_prefix(1);
            text = retry;
            pattern = *afterStar;
        }
    }
    return true;
}

}  // namespace Velo::OS::Telemetry::replay
