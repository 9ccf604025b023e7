#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace Velo::OS::Telemetry::replay {

/// A bar on the last line of a terminal. Drawn anew at most ten times a second.
class ProgressBar {
public:
    /// `terminal` is an open file descriptor that outlives the bar, `total` a number of bytes above 0.
    ProgressBar(int terminal, uint64_t total) : terminal_(terminal), total_(total) {}
    ~ProgressBar() { clear(); }

    void update(uint64_t done);
    /// Takes the bar off the screen until the next update that draws it.
    void clear();

private:
    std::string drawing(uint64_t done) const;

    int terminal_;
    uint64_t total_;
    size_t width_ = 0;  // columns on the screen now
    std::chrono::steady_clock::time_point nextDrawing_{};
};

}  // namespace Velo::OS::Telemetry::replay
