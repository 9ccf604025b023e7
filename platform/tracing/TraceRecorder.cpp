#include "platform/tracing/TraceRecorder.h"

#include <json/value.h>
#include <json/writer.h>
#include <unistd.h>

#include <algorithm>
#include <ostream>
#include <string>

#include "conversion/PerThread.h"

namespace Velo::OS::Telemetry::host {

namespace {

using Clock = std::chrono::steady_clock;

std::unique_ptr<Json::StreamWriter> makeWriter() {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["precisionType"] = "decimal";
    builder["precision"] = 3;  // nanoseconds, as the unit is the microsecond
    return std::unique_ptr<Json::StreamWriter>(builder.newStreamWriter());
}

double microseconds(Clock::duration time) { return std::chrono::duration<double, std::micro>(time).count(); }

}  // namespace

/// Names stand end to end in one string, so that to record an edge allocates nothing of its own.
struct TraceRecorder::ThreadLog {
    struct Record {
        Clock::time_point time;
        size_t nameEnd;  // the name begins where that of the record before ends
        TraceEdge::Kind kind;
    };

    std::string_view nameOf(size_t index) const TELEMETRY_REQUIRES(mutex) {
        const size_t begin = index == 0 ? 0 : records[index - 1].nameEnd;
        return std::string_view(names).substr(begin, records[index].nameEnd - begin);
    }

    const pid_t threadId = gettid();
    std::mutex mutex;
    std::vector<Record> records TELEMETRY_GUARDED_BY(mutex);
    std::string names TELEMETRY_GUARDED_BY(mutex);
};

TraceRecorder::TraceRecorder() = default;
TraceRecorder::~TraceRecorder() = default;

void TraceRecorder::start() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isEnabled()) return;
    logs_.clear();
    start_ = Clock::now();
    recording_.fetch_add(1, std::memory_order_relaxed);
    enabled_.store(true, std::memory_order_release);
}

/// The log of a thread, and the recording to which it belongs.
struct TraceRecorder::OwnLog {
    std::shared_ptr<ThreadLog> log;
    uint64_t recording = 0;
};

TraceRecorder::ThreadLog& TraceRecorder::currentLog(OwnLog& own) {
    const uint64_t recording = recording_.load(std::memory_order_relaxed);
    if (!own.log || own.recording != recording) {
        own = {threadLog(), recording};
    }
    return *own.log;
}

/// A thread that is ending asks at every edge, once what was its own is gone: the log that it had goes on.
std::shared_ptr<TraceRecorder::ThreadLog> TraceRecorder::threadLog() {
    const std::lock_guard<std::mutex> lock(mutex_);
    const pid_t threadId = gettid();
    const auto isOwn = [&](const std::shared_ptr<ThreadLog>& log) { return log->threadId == threadId; };
    const auto found = std::find_if(logs_.rbegin(), logs_.rend(), isOwn);
    return found != logs_.rend() ? *found : logs_.emplace_back(std::make_shared<ThreadLog>());
}

void TraceRecorder::append(TraceEdge::Kind kind, std::string_view name) {
    withThreadsOwn<OwnLog>([&](OwnLog& own) {
        ThreadLog& log = currentLog(own);
        const std::lock_guard<std::mutex> lock(log.mutex);
        log.names.append(name);
        log.records.push_back({Clock::now(), log.names.size(), kind});
    });
}

bool TraceRecorder::write(std::ostream& out) const {
    // One event at a time: as a single value, a long recording would need many times its own memory.
    const std::unique_ptr<Json::StreamWriter> writer = makeWriter();
    Json::Value event;
    event["cat"] = kTraceCategory;
    event["pid"] = getpid();

    out << R"({"displayTimeUnit":"ns","traceEvents":[)";
    const char* separator = "\n";
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const std::shared_ptr<ThreadLog>& log : logs_) {
        const std::lock_guard<std::mutex> logLock(log->mutex);
        event["tid"] = log->threadId;
        size_t open = 0;
        for (size_t i = 0; i < log->records.size(); ++i) {
            const ThreadLog::Record& record = log->records[i];
            const bool begins = record.kind == TraceEdge::Kind::Begin;
            if (!begins && open == 0) continue;  // its begin came before the recording
            open = begins ? open + 1 : open - 1;

            const std::string_view name = log->nameOf(i);
            event["ph"] = begins ? "B" : "E";
            event["ts"] = microseconds(record.time - start_);
            event["name"] = Json::Value(name.data(), name.data() + name.size());
            if (!begins) event.removeMember("name");
            out << separator;
            writer->write(event, &out);
            separator = ",\n";
        }
    }
    out << "\n]}\n" << std::flush;
    return out.good();
}

std::vector<std::vector<TraceEdge>> TraceRecorder::edges() const {
    std::vector<std::vector<TraceEdge>> threads;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const std::shared_ptr<ThreadLog>& log : logs_) {
        const std::lock_guard<std::mutex> logLock(log->mutex);
        std::vector<TraceEdge>& thread = threads.emplace_back();
        for (size_t i = 0; i < log->records.size(); ++i) {
            thread.push_back({log->records[i].kind, std::string(log->nameOf(i))});
        }
    }
    return threads;
}

}  // namespace Velo::OS::Telemetry::host
