#include <map>
#include <memory>
#include <mutex>
#include <ostream>
#include <utility>
#include <vector>

#include "platform/tracing/HostTracing.h"
#include "platform/tracing/TraceCategories.h"
#include "telemetry/LockAnnotations.h"

PERFETTO_TRACK_EVENT_STATIC_STORAGE();

namespace Velo::OS::Telemetry {

namespace {

using perfetto::protos::pbzero::TracePacket;
using perfetto::protos::pbzero::TrackEvent;

// What threads write waits in shared memory for the SDK's own thread, which moves it to the session's buffer. Both
// are as large as a busy run needs; memory is taken as it is used.
constexpr uint32_t kSharedMemoryKb = 32 * 1024;
constexpr uint32_t kBufferKb = 256 * 1024;

std::mutex mutex;
std::unique_ptr<perfetto::TracingSession> session TELEMETRY_GUARDED_BY(mutex);  // set while recording
std::vector<char> recorded TELEMETRY_GUARDED_BY(mutex);                         // a serialised trace
bool complete TELEMETRY_GUARDED_BY(mutex) = true;

void initialiseOnce() {
    [[maybe_unused]] static const bool initialised = [] {
        perfetto::TracingInitArgs args;
        args.backends = perfetto::kInProcessBackend;
        args.shmem_size_hint_kb = kSharedMemoryKb;
        args.shmem_page_size_hint_kb = 4;  // the default, which must be given with a size
        perfetto::Tracing::Initialize(args);
        return perfetto::TrackEvent::Register();
    }();
}

perfetto::TraceConfig pipelineOnly() {
    perfetto::protos::gen::TrackEventConfig categories;
    categories.add_disabled_categories("*");
    categories.add_enabled_categories(host::kTraceCategory);

    perfetto::TraceConfig config;
    auto* buffer = config.add_buffers();
    buffer->set_size_kb(kBufferKb);
    // A full buffer keeps its beginning: the descriptions that later packets refer to stand there.
    buffer->set_fill_policy(perfetto::TraceConfig::BufferConfig::DISCARD);
    auto* source = config.add_data_sources()->mutable_config();
    source->set_name("track_event");
    source->set_track_event_config_raw(categories.SerializeAsString());
    return config;
}

bool hasLost(const perfetto::TracingSession::GetTraceStatsCallbackArgs& answer) {
    perfetto::protos::gen::TraceStats stats;
    if (!answer.success || !stats.ParseFromArray(answer.trace_stats_data.data(), answer.trace_stats_data.size())) {
        return true;
    }
    for (const auto& buffer : stats.buffer_stats()) {
        if (buffer.chunks_discarded() + buffer.chunks_overwritten() + buffer.trace_writer_packet_loss() > 0)
            return true;
    }
    return false;
}

}  // namespace

std::string_view host::traceBackend() { return "perfetto"; }

void host::startTracing() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (session) return;
    initialiseOnce();
    recorded.clear();
    session = perfetto::Tracing::NewTrace(perfetto::kInProcessBackend);
    session->Setup(pipelineOnly());
    session->StartBlocking();
}

void host::stopTracing() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (!session) return;
    perfetto::TrackEvent::Flush();  // the calling thread's own edges; those of ended threads are flushed already
    session->StopBlocking();
    recorded = session->ReadTraceBlocking();
    complete = !hasLost(session->GetTraceStatsBlocking());
    session.reset();
}

bool host::isTraceComplete() {
    const std::lock_guard<std::mutex> lock(mutex);
    return complete;
}

bool host::writeTrace(std::ostream& out) {
    const std::lock_guard<std::mutex> lock(mutex);
    out.write(recorded.data(), static_cast<std::streamsize>(recorded.size()));
    out.flush();
    return out.good();
}

std::vector<std::vector<host::TraceEdge>> host::traceEdges() {
    const std::lock_guard<std::mutex> lock(mutex);
    std::map<uint32_t, std::vector<TraceEdge>> threads;  // a thread's packets form a sequence with a number
    const perfetto::protos::pbzero::Trace::Decoder trace(reinterpret_cast<const uint8_t*>(recorded.data()),
                                                         recorded.size());
    for (auto bytes = trace.packet(); bytes; ++bytes) {
        const TracePacket::Decoder packet(*bytes);
        if (!packet.has_track_event()) continue;
        const TrackEvent::Decoder event(packet.track_event());
        std::vector<TraceEdge>& thread = threads[packet.trusted_packet_sequence_id()];
        if (event.type() == TrackEvent::TYPE_SLICE_BEGIN) {
            thread.push_back({TraceEdge::Kind::Begin, event.name().ToStdString()});
        } else if (event.type() == TrackEvent::TYPE_SLICE_END) {
            thread.push_back({TraceEdge::Kind::End, {}});
        }
    }
    std::vector<std::vector<TraceEdge>> edges;
    for (auto& [sequence, thread] : threads) {
        if (!thread.empty()) edges.push_back(std::move(thread));
    }
    return edges;
}

}  // namespace Velo::OS::Telemetry
