#pragma once

#include <string_view>

#include "telemetry/Export.h"

/// What the library needs of the process-wide trace, in the one category that it uses (entry 11 of the service's
/// registry). Supplied from outside, because only one library of a process can hold the tracing SDK. Thread-safe.
namespace Velo::OS::Telemetry::trace {

/// Whether the category is being recorded at this moment.
TELEMETRY_EXPORT bool isEnabled();

/// Begins a slice on the calling thread. The name is copied.
TELEMETRY_EXPORT void beginSlice(std::string_view name);

/// Ends the slice that the calling thread began last.
TELEMETRY_EXPORT void endSlice();

}  // namespace Velo::OS::Telemetry::trace
