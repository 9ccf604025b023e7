#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "replay/Counts.h"

namespace Velo::OS::Telemetry::replay {

/// The last line of a terminal, which says how far a run has come: a bar if it is known how far it has to go, else
/// numbers of events.
class StatusLine {
public:
    /// `terminal` is an open file descriptor that outlives the line.
    StatusLine(int terminal, std::optional<uint64_t> totalBytes) : terminal_(terminal), totalBytes_(totalBytes) {}
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;
    ~StatusLine() { clear(); }

    /// Draws the line, at most ten times a second.
    void update(const Counts& counts);
    void draw(const Counts& counts);
    /// Takes it off the screen until it is drawn again.
    void clear();

private:
    static std::string bar(uint64_t done, uint64_t total);
    static std::string numbers(const Counts& counts);

    const int terminal_;
    const std::optional<uint64_t> totalBytes_;
    size_t width_ = 0;  // columns on the screen now
    std::chrono::steady_clock::time_point nextDrawing_{};
};

}  // namespace Velo::OS::Telemetry::replay
