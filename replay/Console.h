#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "replay/FileError.h"
#include "replay/LinePlace.h"
#include "replay/ProgressBar.h"

namespace Velo::OS::Telemetry::replay {

/// What became of the events. Every event read or reported is kept, dropped or bad.
struct Counts {
    uint64_t read = 0;
    uint64_t reported = 0;  // monitor events that were logged as events of their own
    uint64_t kept = 0;
    uint64_t dropped = 0;  // by a guard
    uint64_t bad = 0;      // lines that are no event, or one that cannot be converted
    uint64_t bytes = 0;    // of input
};

/// Everything that the tool says on standard error, one line a message. Control characters and bytes that are no UTF-8
/// are escaped here, whoever sent them. What cannot be written is lost: there is no place left to say so.
class Console {
public:
    /// A quiet one drops warnings, progress and the summary.
    explicit Console(bool quiet) : quiet_(quiet) {}

    void error(std::string_view message);
    void error(const LinePlace& place, std::string_view message);
    void warning(std::string_view message);
    void warning(const LinePlace& place, std::string_view message);

    /// From now on `progress` draws a bar, if standard error is a terminal.
    void showProgress(uint64_t totalBytes);
    void progress(uint64_t bytesDone) {
        if (bar_) bar_->update(bytesDone);
    }
    void hideProgress() { bar_.reset(); }

    /// Whether the action could use its files; says so if not.
    template <typename Action>
    bool attempt(Action action) {
        try {
            action();
            return true;
        } catch (const FileError& failure) {
            error(failure.what());
            return false;
        }
    }

    void summary(const Counts& counts, std::chrono::steady_clock::duration elapsed);
    /// Names and numbers.
    using Rows = std::vector<std::pair<std::string, uint64_t>>;
    /// More of the summary.
    void table(const std::string& title, const Rows& rows);

private:
    void print(std::string_view line);

    const bool quiet_;
    std::optional<ProgressBar> bar_;
};

/// One row a line, with each name behind the indent.
std::string toTable(const Console::Rows& rows, const std::string& indent = {});

}  // namespace Velo::OS::Telemetry::replay
