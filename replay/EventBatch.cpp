#include "replay/EventBatch.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <new>
#include <utility>

#include "replay/DropLine.h"
#include "replay/Escape.h"
#include "replay/FileError.h"
#include "replay/OutputLine.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr char kOutOfMemory[] = "out of memory";  // short enough to need none

}  // namespace

void EventBatch::decode() {
    entries_.clear();
    for (const LineBatch::Line& line : lines_.lines()) {
        Entry& entry = entries_.emplace_back();
        try {
            entry.place = {lines_.file(), line.number};
            entry.line = lines_.text(line);
            decode(entry);
        } catch (...) {
            entries_.pop_back();
            throw;
        }
    }
}

void EventBatch::decode(Entry& entry) {
    const LibraryLog::Listening listening(entry.messages);
    EventDecoder::Decoded decoded = decoder_.decode(entry.line);
    if (auto* error = std::get_if<LineError>(&decoded)) {
        entry.error = std::move(*error);
        return;
    }
    entry.event = std::get<std::unique_ptr<TelemetryEventBundle>>(std::move(decoded));
    if (const Json::Value* earlierDrop = decoder_.earlierDrop()) entry.earlierDrop = *earlierDrop;
}

void EventBatch::process(DevicePipeline& pipeline, const Follow& follow) {
    for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
        try {
            if (!entry->error) processEntry(*entry, pipeline, follow);
        } catch (...) {
            // The event's fate is settled even if one of the reports about it has failed.
            entries_.erase(entry->results.empty() ? entry : std::next(entry), entries_.end());
            throw;
        }
    }
}

void EventBatch::processEntry(Entry& entry, DevicePipeline& pipeline, const Follow& follow) {
    const LibraryLog::Listening listening(entry.messages);
    processEvent(entry, {}, std::move(entry.event), pipeline, follow);
    processReports(entry, pipeline, follow);
}

/// A stage may report about a report, and so on, for ever if a rate limit is odd enough.
void EventBatch::processReports(Entry& entry, DevicePipeline& pipeline, const Follow& follow) {
    constexpr int kMaxGenerations = 8;
    const bool needsLines = wishes_.drops || wishes_.monitorEvents || wishes_.rejects || follow;
    const auto resultOf = [&](const MonitorReport& report) {
        Result result;
        result.isReport = true;
        if (needsLines) result.line = toLine(report, entry.place);
        return result;
    };
    for (int generation = 1;; ++generation) {
        const std::vector<MonitorReport> reports = pipeline.takeReports();
        if (reports.empty()) return;
        for (auto report = reports.begin(); report != reports.end(); ++report) {
            if (generation > kMaxGenerations) {
                entry.results.push_back(resultOf(*report));
                continue;
            }
            try {
                processEvent(entry, resultOf(*report), toEvent(*report), pipeline, follow);
            } catch (const FileError&) {
                // The run ends, and as the event is not to be processed again, nobody would report this once more.
                for (; report != reports.end(); ++report) {
                    entry.results.push_back(resultOf(*report));
                    entry.results.back().outcome = Unwritable{"what is reported about it is not logged"};
                }
                throw;
            }
        }
    }
}

void EventBatch::processEvent(Entry& entry, Result result, std::unique_ptr<TelemetryEventBundle> event,
                              DevicePipeline& pipeline, const Follow& follow) {
    if (wishes_.observations) result.name = event->name();
    if (follow) {
        result.journey =
            follow(entry.place, result.isReport, *event, result.isReport ? std::string_view(result.line) : entry.line);
    }
    entry.results.reserve(entry.results.size() + 1);  // afterwards there may be no memory for what became of it
    try {
        EventResult processed = pipeline.processEvent(std::move(event), result.journey.get());
        if (processed.hasValue()) {
            result.event = processed.takeValue();
            result.outcome = Kept{};
        } else {
            result.outcome = Dropped{wishes_.explanations ? pipeline.explainDrop() : Json::Value()};
        }
    } catch (const FileError&) {
        throw;  // it is the store that failed
    } catch (const std::bad_alloc&) {
        result.outcome = Failed{kOutOfMemory};
    } catch (const std::exception& error) {
        // The library lets through what jsoncpp throws at a member of a wrong type. A run goes on after any event.
        result.outcome = Failed{error.what()};
    }
    result.realtimeMs = pipeline.eventTimes().realtimeMs;
    entry.results.push_back(std::move(result));
}

void EventBatch::write() {
    for (std::string* text : texts_.all()) text->clear();
    bool isEveryLineSomewhere = true;
    for (Entry& entry : entries_) {
        if (tryToWrite(entry)) continue;
        // It was processed, so it is not forgotten; there may be memory for its line at least.
        for (Result& result : entry.results) {
            result.event.reset();
            if (result.outcome) result.outcome = Failed{kOutOfMemory};
        }
        isEveryLineSomewhere &= tryToWrite(entry);
    }
    for (Entry& entry : entries_) {
        for (Result& result : entry.results) {
            if (result.event) result.outcome = Kept{{texts_.output.data() + result.textBegin, result.textLength}};
        }
    }
    if (!isEveryLineSomewhere) throw std::bad_alloc();
}

/// False if there is not enough memory: then nothing of it is.
bool EventBatch::tryToWrite(Entry& entry) {
    std::array<size_t, 4> lengths{};
    for (size_t i = 0; i < lengths.size(); ++i) lengths[i] = texts_.all()[i]->size();
    try {
        write(entry);
        return true;
    } catch (const std::exception&) {  // jsoncpp has one of its own for that
        for (size_t i = 0; i < lengths.size(); ++i) texts_.all()[i]->resize(lengths[i]);
        return false;
    }
}

void EventBatch::write(Entry& entry) {
    const LibraryLog::Listening listening(entry.messages);
    if (entry.error) reject(entry.line);
    for (Result& result : entry.results) write(entry, result);
}

void EventBatch::write(const Entry& entry, Result& result) {
    const std::string_view line = result.isReport ? std::string_view(result.line) : entry.line;
    if (result.isReport && wishes_.monitorEvents) texts_.monitorEvents.append(line).append("\n");
    if (!result.outcome) return;
    if (result.event) {
        result.textBegin = texts_.output.size();
        if (!appendOutputLine(*result.event, texts_.output)) {
            result.event.reset();
            result.outcome = Unwritable{"bundle: cannot be converted to JSON"};
        }
        result.textLength = texts_.output.size() - result.textBegin;
    }
    if (auto* dropped = std::get_if<Dropped>(&*result.outcome)) {
        if (!wishes_.drops) return;
        Json::Value why = dropped->why;
        why["place"] = escaped(toText(entry.place));
        const bool hasEarlierDrop = !result.isReport && entry.earlierDrop;
        texts_.drops += dropLine(line, hasEarlierDrop ? &*entry.earlierDrop : nullptr, why);
    } else if (!result.event) {
        reject(line);
    }
}

void EventBatch::reject(std::string_view line) {
    if (wishes_.rejects) texts_.rejects.append(line).append("\n");
}

}  // namespace Velo::OS::Telemetry::replay
