#include "conversion/Immortal.h"
#include "platform/tracing/TraceRecorder.h"
#include "processor/TraceBackend.h"

namespace Velo::OS::Telemetry {

namespace {

host::TraceRecorder& recorder = immortal<host::TraceRecorder>();

}  // namespace

bool trace::isEnabled() { return recorder.isEnabled(); }
void trace::beginSlice(std::string_view name) { recorder.begin(name); }
void trace::endSlice() { recorder.end(); }

std::string_view host::traceBackend() { return "recorder"; }
void host::startTracing() { recorder.start(); }
void host::stopTracing() { recorder.stop(); }
bool host::isTraceComplete() { return true; }
bool host::writeTrace(std::ostream& out) { return recorder.write(out); }
std::vector<std::vector<host::TraceEdge>> host::traceEdges() { return recorder.edges(); }

}  // namespace Velo::OS::Telemetry
