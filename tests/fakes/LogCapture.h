#pragma once

#include <android/log.h>

#include <string>
#include <utility>
#include <vector>

namespace Velo::OS::Telemetry::fakes {

/// While it lives, keeps every log line instead of printing it, as "priority tag: message", for example
/// "5 TelemetryService: text". One at a time.
class LogCapture {
public:
    LogCapture() {
        lines_.clear();
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
        __android_log_set_logger([](const auto*... line) { keep(line...); });
    }
    ~LogCapture() {
        __android_log_set_logger(__android_log_stderr_logger);
        __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
    }

    /// The lines since the last call.
    std::vector<std::string> take() { return std::exchange(lines_, {}); }

private:
    // The liblog of a desk hands over a struct and the message, that of a device one struct with the message in it.
    static void keep(const auto* data, const char* message) {
        lines_.push_back(std::to_string(data->priority) + " " + data->tag + ": " + message);
    }
    static void keep(const auto* data) { keep(data, data->message); }

    inline static std::vector<std::string> lines_;
};

}  // namespace Velo::OS::Telemetry::fakes
