#pragma once

#include <mutex>
#include <string>
#include <unordered_map>

#include "replay/StoreFile.h"
#include "telemetry/LockAnnotations.h"
#include "telemetry/SequenceNumberManager.h"

namespace Velo::OS::Telemetry::replay {

/// Sequence numbers that go on from run to run. Each sequence starts at 1; there is one global sequence, whatever the
/// priority of its events.
///
/// Numbers are reserved in the store by the batch, so that most events need no write, and no two processes draw the
/// same one. What a process has not used of its last batches it hands back; one that dies, or that ends after another
/// has reserved more, leaves a gap. Safe to call from several threads. What the store throws passes through the
/// pipeline and ends the run.
class StoredSequenceNumbers : public SequenceNumberManager {
public:
    static constexpr int64_t kBatch = 1000;

    /// The store must outlive it. Reserves the first numbers, so that a store that cannot be written fails here.
    explicit StoredSequenceNumbers(StoreFile& store);

    uint64_t getNextGlobalSequenceNumber(bool priority) override;
    uint64_t getNextPerTypeSequenceNumber(const std::string& eventName) override;

    /// Hands back the numbers that are reserved and not drawn, unless another process has reserved beyond them, or the
    /// store has failed: then they leave a gap.
    void handBack();

private:
    /// The numbers in hand: from `next` up to `end`, which is not among them.
    struct Range {
        int64_t next = 0;
        int64_t end = 0;
    };

    uint64_t draw(Range& range, const std::string& prefix, const std::string& eventName) TELEMETRY_REQUIRES(mutex_);
    void reserve(Range& range, const std::string& sequence) TELEMETRY_REQUIRES(mutex_);

    StoreFile& store_;
    std::mutex mutex_;
    StoreFile::Statement reserve_ TELEMETRY_GUARDED_BY(mutex_);
    Range global_ TELEMETRY_GUARDED_BY(mutex_);
    std::unordered_map<std::string, Range> perType_ TELEMETRY_GUARDED_BY(mutex_);  // by event name
};

}  // namespace Velo::OS::Telemetry::replay
