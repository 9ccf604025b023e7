#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Velo::OS::Telemetry::benchmarks {

enum class Users {
    Known,  // three, and all that they log is among the first lines
    New,    // four of five events are of a user who was not seen before
};

/// The events' names, by falling frequency; the sample schema knows most of them.
const std::vector<std::string>& eventNames();
/// The uids of the known users.
const std::vector<uint32_t>& knownUids();
/// The packages that log.
const std::vector<std::string>& loggingPackages();

/// That many plausible events as telemetry-replay reads them, without line ends: 200 to 900 bytes of UTF-8 each. Names
/// follow Zipf's law. The same on every machine.
std::vector<std::string> makeEventLines(Users users, size_t count);

}  // namespace Velo::OS::Telemetry::benchmarks
