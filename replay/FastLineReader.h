#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "replay/LineMembers.h"

namespace Velo::OS::Telemetry::replay {

/// Reads the lines that nearly all events come in, at a fraction of what `StrictJson` costs. Whatever is malformed or
/// out of the ordinary it leaves to that, so it accepts less, and what it accepts it reads as the same values. Only
/// their offsets in the line are missing.
///
/// Not to be used by two threads at once.
class FastLineReader {
public:
    FastLineReader();
    ~FastLineReader();

    /// nullopt says nothing about the line: it may be right or wrong.
    std::optional<LineMembers> read(std::string_view line);

private:
    struct Parser;
    std::unique_ptr<Parser> parser_;  // null if it cannot work; its buffers grow with the lines, to about a megabyte
};

}  // namespace Velo::OS::Telemetry::replay
