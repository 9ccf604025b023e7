#include "replay/Console.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "replay/Escape.h"
#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// A line of input may be 1 MiB, and so may a name in it.
constexpr size_t kMaxMessageLength = 500;

std::string placed(const LinePlace& place, std::string_view message) {
    return toText(place) + ": " + std::string(message);
}

void writeToStandardError(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(STDERR_FILENO, text.data(), text.size());
        if (count < 0 && errno != EINTR) return;
        if (count > 0) text.remove_prefix(static_cast<size_t>(count));
    }
}

}  // namespace

void Console::error(std::string_view message) { print(message); }

void Console::error(const LinePlace& place, std::string_view message) { print(placed(place, message)); }

void Console::warning(std::string_view message) {
    if (!quiet_) print("warning: " + std::string(message));
}

void Console::warning(const LinePlace& place, std::string_view message) {
    if (!quiet_) print(placed(place, "warning: " + std::string(message)));
}

void Console::note(std::string_view message) {
    if (!quiet_) print(message);
}

void Console::endLine() {
    if (::isatty(STDERR_FILENO) == 1) writeToStandardError("\n");
}

void Console::showStatus(Status status, std::optional<uint64_t> totalBytes) {
    if (quiet_ || ::isatty(STDERR_FILENO) != 1) return;
    status_ = status;
    statusLine_.emplace(STDERR_FILENO, totalBytes);
}

void Console::summary(const Counts& counts, std::chrono::steady_clock::duration elapsed) {
    const double seconds = std::chrono::duration<double>(elapsed).count();
    const double rate = seconds > 0 ? static_cast<double>(counts.read) / seconds : 0;
    table({}, {{"read", counts.read},
               {"reported", counts.reported},
               {"kept", counts.kept},
               {"dropped", counts.dropped},
               {"bad", counts.bad},
               {"bytes", counts.bytes},
               {"events per second", static_cast<uint64_t>(rate)}});
}

void Console::table(const std::string& title, const Rows& rows) {
    if (quiet_ || rows.empty()) return;
    writeToStandardError(title.empty() ? toTable(rows) : title + "\n" + toTable(rows, "  "));
}

void Console::print(std::string_view line) {
    if (statusLine_) statusLine_->clear();
    std::string text = escaped(utf8Prefix(line, kMaxMessageLength));
    text += line.size() > kMaxMessageLength ? "...\n" : "\n";
    writeToStandardError(text);
}

std::string toTable(const Console::Rows& rows, const std::string& indent) {
    std::string text;
    for (const auto& [name, value] : rows) {
        char row[128];
        std::snprintf(row, sizeof(row), "%-39s %11llu\n", (indent + name).c_str(),
                      static_cast<unsigned long long>(value));
        text += row;
    }
    return text;
}

}  // namespace Velo::OS::Telemetry::replay
