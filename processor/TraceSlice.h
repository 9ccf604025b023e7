#pragma once

#include <string>

#include "processor/TraceBackend.h"

namespace Velo::OS::Telemetry {

/// A slice of the performance trace, from construction to destruction or `end()`. Both edges are recorded only if the
/// category is enabled at their own moment; a label is put together only then.
class TraceSlice {
public:
    explicit TraceSlice(const char* name);
    TraceSlice(const std::string& label, const std::string& subject);
    /// For a caller that has found the category disabled.
    static TraceSlice withoutBegin() { return TraceSlice(); }
    TraceSlice(const TraceSlice&) = delete;
    TraceSlice& operator=(const TraceSlice&) = delete;
    ~TraceSlice() { end(); }

    void end();

private:
    TraceSlice() = default;

    bool ended_ = false;
};

}  // namespace Velo::OS::Telemetry
