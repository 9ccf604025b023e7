#pragma once

#include <mutex>
#include <string>
#include <unordered_map>

#include "replay/StoreFile.h"
#include "telemetry/SequenceNumberManager.h"

namespace Velo::OS::Telemetry::replay {

/// Sequence numbers that go on from run to run. Each sequence starts at 1; there is one global sequence, whatever the
/// priority of its events.
///
/// Numbers are reserved in the store by the batch, so that most events need no write, and no two processes draw the
/// same one. Batches that a process had no use for are handed back at its end; one that dies leaves a gap.
/// Safe to call from several threads. What the store throws passes through the pipeline and ends the run.
class StoredSequenceNumbers : public SequenceNumberManager {
public:
    static constexpr int64_t kBatch = 1000;

    /// The store must outlive it.
    explicit StoredSequenceNumbers(StoreFile& store);

    uint64_t getNextGlobalSequenceNumber(bool priority) override;
    uint64_t getNextPerTypeSequenceNumber(const std::string& eventName) override;

    /// Hands back the numbers that are reserved and not drawn, unless another process has drawn beyond them.
    void handBack();

private:
    /// The numbers in hand: from `next` up to `end`, which is not among them.
    struct Range {
        int64_t next = 0;
        int64_t end = 0;
    };

    /// Prefix and name make the sequence's key in the store.
    uint64_t draw(Range& range, const std::string& prefix, const std::string& eventName);

    StoreFile& store_;
    std::mutex mutex_;  // guards what follows
    StoreFile::Statement reserve_;
    Range global_;
    std::unordered_map<std::string, Range> perType_;  // by event name
};

}  // namespace Velo::OS::Telemetry::replay
