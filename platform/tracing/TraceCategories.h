#pragma once

#include <perfetto.h>

#include "platform/tracing/HostTracing.h"

// The desk's registry of trace categories. A service defines one for its whole process, and every library refers to
// its own entry in it; the pipeline's is number 11, counted from 0. The entries before it belong to parts of a service
// that a desk does not run: they stand here to hold their places.
PERFETTO_DEFINE_CATEGORIES(
    perfetto::Category("reserved0"), perfetto::Category("reserved1"), perfetto::Category("reserved2"),
    perfetto::Category("reserved3"), perfetto::Category("reserved4"), perfetto::Category("reserved5"),
    perfetto::Category("reserved6"), perfetto::Category("reserved7"), perfetto::Category("reserved8"),
    perfetto::Category("reserved9"), perfetto::Category("reserved10"),
    perfetto::Category(Velo::OS::Telemetry::host::kTraceCategory).SetDescription("Event processing and its stages"));

namespace Velo::OS::Telemetry::trace {

using host::kTraceCategory;

}  // namespace Velo::OS::Telemetry::trace
