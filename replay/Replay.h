#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <limits>
#include <mutex>
#include <optional>
#include <vector>

#include "replay/Console.h"
#include "replay/DevicePipeline.h"
#include "replay/EventBatch.h"
#include "replay/LineBatch.h"
#include "replay/LinePlace.h"
#include "replay/Outcome.h"
#include "replay/RunFiles.h"
#include "replay/Turnstile.h"
#include "telemetry/LockAnnotations.h"

namespace Velo::OS::Telemetry::replay {

/// Reads events line by line, has each processed and writes what has become of it. Lines that are no event go to the
/// rejects as they are, events that a guard drops to the drops. What stages report about an event is logged after it,
/// as events of their own.
///
/// Each of its threads takes a batch of lines from the input to the outputs. They decode and write at the same time,
/// yet process in the order of the input, so that what comes out is the same for any number of threads. With one thread
/// a batch is one line. Outputs are flushed before the input is waited for.
class Replay {
public:
    struct Options {
        unsigned threads = 1;
        bool stopsAtBadLine = false;
        bool onlyFollowed = false;  // of others nothing is written, and nothing is said unless they are bad
        EventBatch::Follow follow;  // none: no event has a journey
        /// Those who look at every event, in the order of the input.
        std::vector<std::function<void(const Observation&)>> observers;
        /// Whether a bad line at that place counts; none: all do.
        std::function<bool(const LinePlace&)> concerns;
        /// Whether the run may end after that line; none: it may not.
        std::function<bool(const LinePlace&, bool isInLastFile)> isDone;
    };

    /// All arguments lent must outlive it. What stops at a bad line has one thread.
    Replay(RunFiles& files, DevicePipeline& pipeline, Console& console, Options options);

    /// Reads the inputs to their end, until it is interrupted, until an output fails, or to the first bad line if that
    /// is to stop the run. Throws `FileError` if it is the input or the store that fails; the counts then say how far
    /// it came. To close the outputs, which may still hold lines in their buffers, is left to the caller.
    void run();

    const Counts& counts() const { return counts_; }
    /// The last line of which everything is written; none if it has no number.
    const LinePlace& lastPlace() const { return lastPlace_; }
    /// Whether it has come to the end of the inputs, and has had no reason to stop before.
    // Unchecked: asked after the run, when no other thread is left.
    bool isComplete() const TELEMETRY_NO_LOCK_CHECK { return hasReachedEnd_ && lastTicket_ == kNoTicket; }

private:
    static constexpr uint64_t kNoTicket = std::numeric_limits<uint64_t>::max();

    /// What a thread has in hand.
    struct Work {
        explicit Work(const EventBatch::Wishes& wishes) : batch(wishes) {}

        EventBatch batch;
        uint64_t ticket = 0;
        uint64_t bytesRead = 0;
        LinePlace place;  // the last one, if anyone wants to know
        bool isInLastFile = false;
    };

    EventBatch::Wishes wishes() const;
    void work();
    template <typename Step>
    void attempt(uint64_t ticket, Step step);
    void stopAfter(uint64_t ticket, std::exception_ptr failure = nullptr);
    void stopIfAnOutputFailed(uint64_t ticket);
    bool isDiscarded(uint64_t ticket) const { return ticket > lastTicket_; }

    bool read(Work& work);
    bool awaitInput() TELEMETRY_REQUIRES(reading_);
    void handleLongLine(uint64_t ticket) TELEMETRY_REQUIRES(reading_);

    void commit(const Work& work);
    void count(const EventBatch::Entry& entry);
    void countBad(const LinePlace& place);
    void show(const EventBatch::Entry& entry);
    void show(const LinePlace& place, const EventBatch::Result& result);
    void sayBad(const LinePlace& place, const std::string& reason);
    bool concerns(const LinePlace& place) const;

    RunFiles& files_;
    DevicePipeline& pipeline_;
    Console& console_;
    const Options options_;

    std::mutex reading_;
    BatchReader reader_ TELEMETRY_GUARDED_BY(reading_);
    uint64_t tickets_ TELEMETRY_GUARDED_BY(reading_) = 0;
    bool hasReachedEnd_ TELEMETRY_GUARDED_BY(reading_) = false;

    Turnstile processing_;  // for the pipeline
    Turnstile writing_;     // for the files, the console and what follows
    Counts counts_;
    LinePlace lastPlace_;
    bool hasGoneTooFar_ = false;  // with reports about reports

    std::atomic<uint64_t> lastTicket_ = kNoTicket;                // batches after it are discarded
    std::mutex stopping_;                                         // taken to lower it
    std::exception_ptr failure_ TELEMETRY_GUARDED_BY(stopping_);  // the first, of whatever batch
};

}  // namespace Velo::OS::Telemetry::replay
