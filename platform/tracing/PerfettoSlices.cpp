// The registry of the process's trace categories: on a desk the one beside this file, on a device the service's, whose
// folder its build names. It defines `Velo::OS::Telemetry::trace::kTraceCategory` too.
#include <TraceCategories.h>

#include "processor/TraceBackend.h"

namespace Velo::OS::Telemetry {

static_assert(PERFETTO_GET_CATEGORY_INDEX(trace::kTraceCategory) == 11,
              "the pipeline traces in entry 11 of the registry");

bool trace::isEnabled() { return TRACE_EVENT_CATEGORY_ENABLED(trace::kTraceCategory); }

void trace::beginSlice(std::string_view name) {
    TRACE_EVENT_BEGIN(trace::kTraceCategory, nullptr,
                      [&](perfetto::EventContext context) { context.event()->set_name(name.data(), name.size()); });
}

void trace::endSlice() { TRACE_EVENT_END(trace::kTraceCategory); }

}  // namespace Velo::OS::Telemetry
