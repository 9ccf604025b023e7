#include "replay/RunReport.h"

#include <ctime>

#include "embedded/report.h"
#include "replay/CompactJson.h"
#include "replay/Escape.h"
#include "replay/JourneyText.h"
#include "replay/Utf8.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr size_t kMaxNames = 1000;             // of input and of reports, and as many identifiers
constexpr size_t kMaxNameLength = 256;         // on the page: a line of input, and a name in it, may be 1 MiB
constexpr size_t kMaxJourneyBytes = 32 << 20;  // a browser still opens the page

/// The entry of that name. A new one goes with the others, which have no name, once there are many.
template <typename Entry, typename Begin>
Entry& entryOf(std::map<std::string, Entry, std::less<>>& entries, std::optional<Entry>& others, std::string_view name,
               Begin begin) {
    const std::string_view key = utf8Prefix(name, kMaxNameLength);
    if (const auto known = entries.find(key); known != entries.end()) return known->second;
    if (entries.size() < kMaxNames) return entries.emplace(key, begin()).first->second;
    if (!others) others = begin();
    return *others;
}

std::string utcText(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    struct tm utc {};
    ::gmtime_r(&seconds, &utc);
    char text[32];
    return {text, std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

Json::Value jsonOf(const Counts& counts) {
    Json::Value json;
    json["read"] = Json::UInt64{counts.read};
    json["reported"] = Json::UInt64{counts.reported};
    json["kept"] = Json::UInt64{counts.kept};
    json["dropped"] = Json::UInt64{counts.dropped};
    json["bad"] = Json::UInt64{counts.bad};
    json["bytes"] = Json::UInt64{counts.bytes};
    return json;
}

/// Times of events without a journey, which are the truer ones, unless there is none.
Json::Value jsonOf(const std::vector<StageTime>& times) {
    bool plain = false;
    for (const StageTime& time : times) plain |= time.plain.events > 0;
    Json::Value json;
    json["of_followed_events"] = !plain;
    json["stages"] = Json::arrayValue;
    for (const StageTime& time : times) {
        const StageTime::Sum& sum = plain ? time.plain : time.followed;
        Json::Value& stage = json["stages"].append({});
        stage["name"] = time.name;
        stage["kind"] = nameOf(time.kind);
        stage["events"] = Json::UInt64{sum.events};
        stage["ns"] = Json::UInt64{sum.ns};
    }
    return json;
}

Json::Value jsonOf(const Device::Clock& clock) {
    if (!clock.adjusted || !clock.timeMs || !clock.bootTimeMs) return {};
    return static_cast<double>(*clock.timeMs) - static_cast<double>(*clock.bootTimeMs);
}

/// The JSON within a script element, which no text in it may end. JSON has these characters in strings only.
std::string embeddable(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    for (size_t i = 0; i < json.size(); ++i) {
        const std::string_view three = json.substr(i, 3);
        if (json[i] == '<') {
            text += "\\u003c";
        } else if (three == "\xE2\x80\xA8" || three == "\xE2\x80\xA9") {
            text += three[2] == '\xA8' ? "\\u2028" : "\\u2029";
            i += 2;
        } else {
            text += json[i];
        }
    }
    return text;
}

/// The template up to the marker, which it then stands behind.
std::string_view takeUntil(std::string_view marker, std::string_view& page) {
    const size_t at = page.find(marker);
    const std::string_view part = page.substr(0, at);
    page.remove_prefix(at + marker.size());
    return part;
}

}  // namespace

bool RunReport::hasRoomForJourney() const {
    return journeys_.size() < journeysWanted_ && journeyBytes_ < kMaxJourneyBytes;
}

RunReport::Row& RunReport::rowOf(const Observation& event) {
    return entryOf(event.isReport ? reports_ : inputs_, event.isReport ? otherReports_ : otherInputs_, event.name, [&] {
        Row row;
        row.allSeries = buckets_.addSeries();
        row.lostSeries = buckets_.addSeries();
        return row;
    });
}

void RunReport::observe(const Observation& event) {
    Row& row = rowOf(event);
    ++row.events;
    if (!buckets_.add(row.allSeries, event.realtimeMs)) ++untimed_;
    if (const auto* dropped = std::get_if<Dropped>(&event.outcome)) {
        observeDrop(event, dropped->why, row);
    } else if (std::holds_alternative<Kept>(event.outcome)) {
        ++row.kept;
    } else {
        ++row.bad;
        ++(std::holds_alternative<Failed>(event.outcome) ? failed_ : unwritable_);
        buckets_.add(row.lostSeries, event.realtimeMs);
    }
    if (event.journey && hasRoomForJourney()) {
        journeys_.push_back(toJsonLine(*event.journey, event.outcome));
        journeyBytes_ += journeys_.back().size();
    }
}

void RunReport::observeDrop(const Observation& event, const Json::Value& why, Row& row) {
    const std::string reason = why["reason"].asString();
    ++row.drops[reason];
    guards_.try_emplace(reason, why["guard"].asString());
    buckets_.add(row.lostSeries, event.realtimeMs);
    if (reason == "rate_limit.exceeded") observeBreach(event, why);
}

void RunReport::observeBreach(const Observation& event, const Json::Value& why) {
    const Json::Value& identifier = why["identifier"];  // null if it is the name
    Breach& breach = entryOf(breaches_, otherBreaches_, identifier.isNull() ? event.name : identifier.asString(), [&] {
        return Breach{0, why["limit"], why["window_ms"], buckets_.addSeries()};
    });
    ++breach.refused;
    buckets_.add(breach.series, event.realtimeMs);
}

void RunReport::write(OutputFile& file, const RunFacts& facts) const {
    std::string_view page = embedded::report_html;
    file.write(takeUntil("/* report.css */", page));
    file.write(embedded::report_css);
    file.write(takeUntil("/* run.json */", page));
    file.write(embeddable(toCompactJson(toJson(facts))));
    file.write(takeUntil("/* journeys.json */", page));
    const char* separator = "[\n";
    for (const std::string& journey : journeys_) {
        file.write(std::exchange(separator, ","));
        file.write(embeddable(journey));
    }
    file.write(journeys_.empty() ? "[]" : "]");
    file.write(takeUntil("/* report.js */", page));
    file.write(embedded::report_js);
    file.write(page);
}

/// Everything but the journeys.
Json::Value RunReport::toJson(const RunFacts& facts) const {
    Json::Value json;
    json["version"] = TELEMETRY_REPLAY_VERSION;
    json["started"] = utcText(facts.started);
    json["elapsed_ns"] = Json::Int64{std::chrono::nanoseconds(facts.elapsed).count()};
    json["inputs"] = Json::arrayValue;
    for (const std::string& input : facts.inputs) json["inputs"].append(escaped(input));
    json["counts"] = jsonOf(facts.counts);
    json["failed"] = Json::UInt64{failed_};
    json["unwritable"] = Json::UInt64{unwritable_};
    json["untimed"] = Json::UInt64{untimed_};
    json["guards"] = Json::arrayValue;
    for (const auto& [guard, dropped] : facts.drops) {
        Json::Value& entry = json["guards"].append({});
        entry["name"] = guard;
        entry["dropped"] = Json::UInt64{dropped};
    }
    json["guard_of_reason"] = Json::objectValue;
    for (const auto& [reason, guard] : guards_) json["guard_of_reason"][reason] = guard;
    json["counters"] = Json::objectValue;
    for (const auto& [name, count] : facts.counters) json["counters"][name] = Json::UInt64{count};
    json["stage_times"] = jsonOf(facts.stageTimes);
    json["boot_wall_ms"] = jsonOf(facts.clock);
    json["buckets"]["start_ms"] = Json::Int64{buckets_.startMs()};
    json["buckets"]["width_ms"] = Json::Int64{buckets_.widthMs()};
    json["buckets"]["size"] = Json::UInt64{buckets_.size()};
    json["inputs_by_name"] = toJson(inputs_, otherInputs_);
    json["reports_by_name"] = toJson(reports_, otherReports_);
    json["breaches"] = toJson(breaches_, otherBreaches_);
    return json;
}

/// A list, in which the others have the name null: no event has that.
template <typename Entry>
Json::Value RunReport::toJson(const ByName<Entry>& entries, const std::optional<Entry>& others) const {
    Json::Value list = Json::arrayValue;
    for (const auto& [name, entry] : entries) list.append(toJson(entry))["name"] = name;
    if (others) list.append(toJson(*others))["name"] = Json::Value();
    return list;
}

Json::Value RunReport::toJson(const Row& row) const {
    Json::Value json;
    json["events"] = Json::UInt64{row.events};
    json["kept"] = Json::UInt64{row.kept};
    json["bad"] = Json::UInt64{row.bad};
    json["drops"] = Json::objectValue;
    for (const auto& [reason, count] : row.drops) json["drops"][reason] = Json::UInt64{count};
    json["all"] = countsOf(row.allSeries);
    json["lost"] = countsOf(row.lostSeries);
    return json;
}

Json::Value RunReport::toJson(const Breach& breach) const {
    Json::Value json;
    json["refused"] = Json::UInt64{breach.refused};
    json["limit"] = breach.limit;
    json["window_ms"] = breach.windowMs;
    json["times"] = countsOf(breach.series);
    return json;
}

/// Pairs of a bucket and its count, of those that are not empty.
Json::Value RunReport::countsOf(size_t series) const {
    Json::Value pairs = Json::arrayValue;
    const std::vector<uint64_t> counts = buckets_.counts(series);
    for (size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] == 0) continue;
        Json::Value& pair = pairs.append(Json::arrayValue);
        pair.append(Json::UInt64{i});
        pair.append(Json::UInt64{counts[i]});
    }
    return pairs;
}

}  // namespace Velo::OS::Telemetry::replay
