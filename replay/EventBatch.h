#pragma once

#include <json/value.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "replay/DevicePipeline.h"
#include "replay/EventDecoder.h"
#include "replay/Journey.h"
#include "replay/LibraryLog.h"
#include "replay/LineBatch.h"
#include "replay/Outcome.h"

namespace Velo::OS::Telemetry::replay {

/// A batch of lines, and what becomes of them in three steps: decode, process, write. Other threads may decode and
/// write other batches meanwhile; batches are processed one after another, in the order of their lines.
class EventBatch {
public:
    /// What is wanted beside the texts of what is kept: each costs time.
    struct Wishes {
        bool drops = false, monitorEvents = false, rejects = false;  // their lines
        bool explanations = false;                                   // of drops
        bool observations = false;                                   // names and times
    };

    /// Begins the journey of an event that is to be followed; null if it is not.
    using Follow = std::function<std::unique_ptr<Journey>(const LinePlace& place, bool isReport,
                                                          const TelemetryEvent& event, std::string_view line)>;

    /// What became of an event that was read or reported.
    struct Result {
        bool isReport = false;
        std::string line;  // of a report
        std::string name;
        int64_t realtimeMs = 0;
        std::unique_ptr<Journey> journey;       // null if it was not followed
        std::unique_ptr<TelemetryEvent> event;  // null if it was not kept
        std::optional<Outcome> outcome;         // none: a report about reports that was not logged
        size_t textBegin = 0, textLength = 0;   // of its output
    };

    /// A line and what became of it, and then of what stages reported about it.
    struct Entry {
        LinePlace place;
        std::string_view line;
        std::unique_ptr<TelemetryEventBundle> event;  // until it is processed
        std::optional<LineError> error;               // it is no event
        std::optional<Json::Value> earlierDrop;       // its member "dropped"
        std::vector<Result> results;
        LibraryLog::Messages messages;
    };

    /// For the files of a run.
    struct Texts {
        std::string output, drops, monitorEvents, rejects;

        std::array<std::string*, 4> all() { return {&output, &drops, &monitorEvents, &rejects}; }
    };

    explicit EventBatch(const Wishes& wishes) : wishes_(wishes) {}

    /// To be filled before the first step.
    LineBatch& lines() { return lines_; }

    // What a step throws - `FileError` if the store fails, `std::bad_alloc` - leaves the entries that it has finished.
    void decode();
    void process(DevicePipeline& pipeline, const Follow& follow);
    /// An event for whose text there is no memory has failed. Throws `std::bad_alloc`, with all entries settled, if
    /// there is none for its line either.
    void write();
    /// Leaves nothing to process or to write.
    void discard() { entries_.clear(); }

    // After the last step.
    const std::vector<Entry>& entries() const { return entries_; }
    const Texts& texts() const { return texts_; }

private:
    void decode(Entry& entry);
    void processEntry(Entry& entry, DevicePipeline& pipeline, const Follow& follow);
    void processReports(Entry& entry, DevicePipeline& pipeline, const Follow& follow);
    void processEvent(Entry& entry, Result result, std::unique_ptr<TelemetryEventBundle> event,
                      DevicePipeline& pipeline, const Follow& follow);
    [[nodiscard]] bool tryToWrite(Entry& entry);
    void write(Entry& entry);
    void write(const Entry& entry, Result& result);
    void reject(std::string_view line);

    const Wishes wishes_;
    LineBatch lines_;
    EventDecoder decoder_;
    std::vector<Entry> entries_;
    Texts texts_;
};

}  // namespace Velo::OS::Telemetry::replay
