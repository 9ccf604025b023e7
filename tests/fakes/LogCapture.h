#pragma once

#include <string>
#include <vector>

namespace Velo::OS::Telemetry::fakes {

/// While it lives, keeps every log line instead of printing it, as "priority tag: message", for example
/// "5 TelemetryService: text". One at a time.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines since the last call.
    std::vector<std::string> take();
};

}  // namespace Velo::OS::Telemetry::fakes
