#pragma once

#include <json/value.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "replay/Console.h"
#include "replay/Device.h"
#include "replay/Outcome.h"
#include "replay/OutputFile.h"
#include "replay/StageTimer.h"
#include "replay/TimeBuckets.h"

namespace Velo::OS::Telemetry::replay {

/// What is known of a run when it is over.
struct RunFacts {
    std::chrono::system_clock::time_point started;
    std::chrono::steady_clock::duration elapsed{};
    std::vector<std::string> inputs;  // as they are shown
    Counts counts;
    std::vector<std::pair<std::string, uint64_t>> drops;  // by guard, in the order in which guards run
    std::map<std::string, uint64_t> counters;
    std::vector<StageTime> stageTimes;  // empty: not taken
    Device::Clock clock;                // if it is adjusted and stands still, times are shown as wall-clock times
};

/// A page for a browser that shows a run: what became of the events by name and over time, and some of their journeys.
/// It needs no other file and no network. Its memory hangs on the number of names and journeys, both limited, and not
/// on the number of events. For one thread.
class RunReport {
public:
    /// Keeps the journeys of as many events, in the order in which they are observed.
    explicit RunReport(uint64_t maxJourneys) : journeysWanted_(maxJourneys) {}

    /// To be told of every event that was logged, in the order of the input.
    void observe(const Observation& event);

    /// Throws `FileError`. Does not close the file.
    void write(OutputFile& file, const RunFacts& facts) const;

private:
    /// What became of all events of a name.
    struct Row {
        uint64_t events = 0, kept = 0, bad = 0;
        std::map<std::string, uint64_t> drops;  // by reason
        size_t allSeries = 0, lostSeries = 0;   // the latter of events that were dropped or bad
    };
    /// What the rate limit of an identifier has refused.
    struct Breach {
        uint64_t refused = 0;
        Json::Value limit, windowMs;  // null if it never ends
        size_t series = 0;
    };
    template <typename Entry>
    using ByName = std::map<std::string, Entry, std::less<>>;

    bool hasRoomForJourney() const;
    Row& rowOf(const Observation& event);
    void observeDrop(const Observation& event, const Json::Value& why, Row& row);
    void observeBreach(const Observation& event, const Json::Value& why);

    Json::Value toJson(const RunFacts& facts) const;
    template <typename Entry>
    Json::Value toJson(const ByName<Entry>& entries, const std::optional<Entry>& others) const;
    Json::Value toJson(const Row& row) const;
    Json::Value toJson(const Breach& breach) const;
    Json::Value countsOf(size_t series) const;

    ByName<Row> inputs_, reports_;
    std::optional<Row> otherInputs_, otherReports_;
    ByName<Breach> breaches_;  // by identifier
    std::optional<Breach> otherBreaches_;
    std::map<std::string, std::string> guards_;  // by reason
    TimeBuckets buckets_;
    uint64_t untimed_ = 0, failed_ = 0, unwritable_ = 0;

    uint64_t journeysWanted_;
    std::vector<std::string> journeys_;  // a line of JSON each
    size_t journeyBytes_ = 0;
};

}  // namespace Velo::OS::Telemetry::replay
