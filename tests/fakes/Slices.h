#pragma once

#include <set>
#include <string>

#include "platform/tracing/HostTracing.h"

namespace Velo::OS::Telemetry::fakes {

/// Stops the recording and gives one text for each thread: "<name " for a begin, "> " for an end.
inline std::multiset<std::string> recordedSlices() {
    host::stopTracing();
    std::multiset<std::string> threads;
    for (const auto& edges : host::traceEdges()) {
        std::string text;
        for (const host::TraceEdge& edge : edges) {
            text += (edge.kind == host::TraceEdge::Kind::Begin ? "<" : ">") + edge.name + ' ';
        }
        threads.insert(text);
    }
    return threads;
}

}  // namespace Velo::OS::Telemetry::fakes
