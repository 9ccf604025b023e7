#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "replay/Counts.h"
#include "replay/FileError.h"
#include "replay/LinePlace.h"
#include "replay/StatusLine.h"

namespace Velo::OS::Telemetry::replay {

/// Everything that the tool says on standard error, one line a message. Control characters, invisible ones and bytes
/// that are no UTF-8 are escaped here, whoever sent them. What cannot be written is lost: there is no place left to say
/// so.
class Console {
public:
    /// A quiet one drops warnings, progress and the summary.
    explicit Console(bool quiet) : quiet_(quiet) {}

    void error(std::string_view message);
    void error(const LinePlace& place, std::string_view message);
    void warning(std::string_view message);
    void warning(const LinePlace& place, std::string_view message);
    /// What is good to know.
    void note(std::string_view message);

    /// When to show how far a run has come.
    enum class Status { Always, WhenWaiting };
    /// From now on the last line of standard error, if that is a terminal, says how far a run has come. If the number
    /// of bytes to read is unknown, it counts events instead.
    void showStatus(Status status, std::optional<uint64_t> totalBytes);
    void progress(const Counts& counts) {
        if (statusLine_ && status_ == Status::Always) statusLine_->update(counts);
    }
    /// The run waits for input, so that now is the time to say it all.
    void waiting(const Counts& counts) {
        if (statusLine_) statusLine_->draw(counts);
    }
    /// Input has come: what shows only while waiting makes room for output on the same terminal.
    void resumed() {
        if (statusLine_ && status_ == Status::WhenWaiting) statusLine_->clear();
    }
    void hideStatus() { statusLine_.reset(); }
    /// What is said next begins a line of the terminal, even behind a "^C".
    void endLine();

    /// Whether the action could use its files, and had enough memory; says what it throws if not. That a reader has
    /// left is no fault.
    template <typename Action>
    bool attempt(Action action) {
        try {
            action();
            return true;
        } catch (const ReaderLeft&) {
            return true;
        } catch (const std::bad_alloc&) {
            error("out of memory");
        } catch (const std::exception& failure) {
            error(failure.what());  // a file's error, or what jsoncpp throws if there is no memory for a text
        }
        return false;
    }

    void summary(const Counts& counts, std::chrono::steady_clock::duration elapsed);
    /// Names and numbers.
    using Rows = std::vector<std::pair<std::string, uint64_t>>;
    /// More of the summary.
    void table(const std::string& title, const Rows& rows);

private:
    void print(std::string_view line);

    const bool quiet_;
    Status status_ = Status::Always;
    std::optional<StatusLine> statusLine_;
};

/// One row a line, with each name behind the indent.
std::string toTable(const Console::Rows& rows, const std::string& indent = {});

}  // namespace Velo::OS::Telemetry::replay
