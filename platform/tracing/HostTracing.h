#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "telemetry/Export.h"

/// The desk's own end of the trace: what a device's tracing daemon does there, a desk tool does here. One recording at
/// a time in the whole process, made of the slices that the pipeline begins and ends while it runs.
///
///     host::startTracing();
///     ...                                   // process events, on any number of threads
///     host::stopTracing();
///     if (!host::writeTrace(file)) ...      // a full disk, say
///
/// All functions are thread-safe; those that look at a recording want it stopped. A recording lives in memory: about 24
/// bytes plus the name for each edge with the recorder, at most 256 MiB with Perfetto.
namespace Velo::OS::Telemetry::host {

/// The category of every slice, as it stands in the file.
inline constexpr char kTraceCategory[] = "telemetry";

/// One edge of a slice. An end bears no name: it ends what its thread began last.
struct TraceEdge {
    enum class Kind { Begin, End };

    Kind kind = Kind::Begin;
    std::string name;  // UTF-8, empty at an end
};

/// The backend that was built in: "recorder" or "perfetto".
TELEMETRY_EXPORT std::string_view traceBackend();

/// Forgets the last recording and begins a new one. When this returns the category is enabled. Nothing happens while
/// a recording runs.
TELEMETRY_EXPORT void startTracing();

/// Ends the recording and keeps it until the next start or the end of the process. When this returns the category is
/// disabled. Nothing happens when no recording runs.
///
/// Threads that traced should have ended, or be the calling one: the Perfetto SDK may miss the last edges of a thread
/// that still lives.
TELEMETRY_EXPORT void stopTracing();

/// Whether nothing was dropped from the recording that was stopped last. The recorder drops nothing; Perfetto drops
/// edges that come faster than its service takes them, and those that find its buffer full.
TELEMETRY_EXPORT bool isTraceComplete();

/// Writes the recording that was stopped last, in a form that the Perfetto UI opens, and flushes `out`: Trace Event
/// Format (JSON, for chrome://tracing too) from the recorder, a binary `perfetto.protos.Trace` from Perfetto. Without
/// a recording the file is one without slices. False if the stream failed, so that the file cannot be trusted.
[[nodiscard]] TELEMETRY_EXPORT bool writeTrace(std::ostream& out);

/// The edges of the recording that was stopped last: one list for each thread that recorded any, in the thread's own
/// order. The order of the threads means nothing.
TELEMETRY_EXPORT std::vector<std::vector<TraceEdge>> traceEdges();

}  // namespace Velo::OS::Telemetry::host
