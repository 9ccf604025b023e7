#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Velo::OS::Telemetry::replay {

/// The command line of `run`. A path "-" is standard input or standard output, but for the store.
struct RunOptions {
    std::vector<std::string> inputs;    // none: standard input
    std::optional<std::string> device;  // none: a device of which nothing is known
    std::optional<std::string> schema;  // none: the one that the store holds
    std::optional<std::string> store;   // none: a temporary one
    std::string output = "-";
    std::optional<std::string> rejects;        // none: bad lines are only counted
    std::optional<std::string> drops;          // none: dropped events are only counted
    std::optional<std::string> monitorEvents;  // none: what stages report is only logged
    std::optional<std::string> trace;
    std::optional<std::string> expectations;  // what must hold of the run
    std::optional<std::string> report;        // the page that shows the run
    uint64_t reportEvents = 200;              // whose journeys are in it
    unsigned threads = 1;
    bool printConfig = false;  // instead of running
    bool strict = false;
    bool quiet = false;
};

}  // namespace Velo::OS::Telemetry::replay
