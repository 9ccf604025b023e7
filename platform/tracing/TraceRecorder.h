#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "platform/tracing/HostTracing.h"
#include "telemetry/LockAnnotations.h"

namespace Velo::OS::Telemetry::host {

/// Keeps the edges of slices in one log per thread, and writes them in the Trace Event Format. Thread-safe: a thread
/// shares its log with `write` and `edges` alone, never with another thread that records. The logs of threads that
/// have ended are kept, and go on if a new thread has the same number.
///
/// One instance per process: a thread remembers which log is its own in one place.
class TraceRecorder {
public:
    TraceRecorder();
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;
    ~TraceRecorder();

    /// Drops every log and begins to record, unless it does so already.
    void start();
    void stop() { enabled_.store(false, std::memory_order_release); }
    bool isEnabled() const { return enabled_.load(std::memory_order_acquire); }

    /// Records an edge of the calling thread, whether enabled or not: to ask first is up to the caller. The name is
    /// copied.
    void begin(std::string_view name) { append(TraceEdge::Kind::Begin, name); }
    void end() { append(TraceEdge::Kind::End, {}); }

    /// Writes and flushes. Times count from the start of the recording, in microseconds with three decimals. An end
    /// is left out when no slice of its thread is open. False if the stream failed.
    [[nodiscard]] bool write(std::ostream& out) const;

    /// Every edge as recorded, by thread.
    std::vector<std::vector<TraceEdge>> edges() const;

private:
    struct ThreadLog;
    struct OwnLog;

    void append(TraceEdge::Kind kind, std::string_view name);
    ThreadLog& currentLog(OwnLog& own);
    std::shared_ptr<ThreadLog> threadLog();

    std::atomic<bool> enabled_{false};
    std::atomic<uint64_t> recording_{0};  // number of the current recording; a log belongs to one

    mutable std::mutex mutex_;  // taken before a log's own
    std::vector<std::shared_ptr<ThreadLog>> logs_ TELEMETRY_GUARDED_BY(mutex_);
    std::chrono::steady_clock::time_point start_ TELEMETRY_GUARDED_BY(mutex_){};
};

}  // namespace Velo::OS::Telemetry::host
