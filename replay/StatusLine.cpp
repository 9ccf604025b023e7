#include "replay/StatusLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr std::chrono::milliseconds kRedrawInterval{100};
constexpr size_t kCells = 30;
constexpr double kBytesPerMiB = 1024.0 * 1024.0;

size_t columns(int terminal) {
    winsize size{};
    return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

/// A bar that cannot be drawn is no reason to stop a run.
void show(int terminal, std::string_view text) {
    [[maybe_unused]] const ssize_t ignored = ::write(terminal, text.data(), text.size());
}

}  // namespace

void StatusLine::update(const Counts& counts) {
    if (std::chrono::steady_clock::now() >= nextDrawing_) draw(counts);
}

void StatusLine::draw(const Counts& counts) {
    nextDrawing_ = std::chrono::steady_clock::now() + kRedrawInterval;
    std::string text = totalBytes_ ? bar(counts.bytes, *totalBytes_) : numbers(counts);
    text.resize(std::min(text.size(), columns(terminal_) - 1));  // a line that wraps cannot be taken back
    const std::string rest(width_ > text.size() ? width_ - text.size() : 0, ' ');
    show(terminal_, "\r" + text + rest);
    width_ = text.size();
}

void StatusLine::clear() {
    if (width_ == 0) return;
    show(terminal_, "\r" + std::string(width_, ' ') + "\r");
    width_ = 0;
}

std::string StatusLine::bar(uint64_t done, uint64_t total) {
    const double share = total > 0 ? std::min(1.0, static_cast<double>(done) / static_cast<double>(total)) : 1;
    const auto full = static_cast<size_t>(share * kCells);
    char text[64];
    std::snprintf(text, sizeof(text), "] %3d%% of %.1f MiB", static_cast<int>(share * 100),
                  static_cast<double>(total) / kBytesPerMiB);
    return "[" + std::string(full, '#') + std::string(kCells - full, '.') + text;
}

std::string StatusLine::numbers(const Counts& counts) {
    const auto number = [](const char* name, uint64_t count) { return name + std::to_string(count); };
    return number("read ", counts.read) + number(", reported ", counts.reported) + number(", kept ", counts.kept) +
           number(", dropped ", counts.dropped) + number(", bad ", counts.bad);
}

}  // namespace Velo::OS::Telemetry::replay
