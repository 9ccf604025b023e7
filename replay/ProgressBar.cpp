#include "replay/ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr std::chrono::milliseconds kRedrawInterval{100};
constexpr size_t kCells = 30;
constexpr double kBytesPerMiB = 1024.0 * 1024.0;

/// A bar that cannot be drawn is no reason to stop a run.
void show(int terminal, std::string_view text) {
    [[maybe_unused]] const ssize_t ignored = ::write(terminal, text.data(), text.size());
}

}  // namespace

void ProgressBar::update(uint64_t done) {
    const auto now = std::chrono::steady_clock::now();
    if (now < nextDrawing_) return;
    nextDrawing_ = now + kRedrawInterval;

    const std::string bar = drawing(std::min(done, total_));
    show(terminal_, "\r" + bar);
    width_ = bar.size();
}

void ProgressBar::clear() {
    if (width_ == 0) return;
    show(terminal_, "\r" + std::string(width_, ' ') + "\r");
    width_ = 0;
}

std::string ProgressBar::drawing(uint64_t done) const {
    const double share = static_cast<double>(done) / static_cast<double>(total_);
    const auto full = static_cast<size_t>(share * kCells);
    char numbers[64];
    std::snprintf(numbers, sizeof(numbers), "] %3d%% of %.1f MiB", static_cast<int>(share * 100),
                  static_cast<double>(total_) / kBytesPerMiB);
    return "[" + std::string(full, '#') + std::string(kCells - full, '.') + numbers;
}

}  // namespace Velo::OS::Telemetry::replay
