#include "tests/fakes/LogCapture.h"

#include <android/log.h>

#include <utility>

namespace Velo::OS::Telemetry::fakes {

namespace {

std::vector<std::string> lines;

// The only place that knows this liblog's form of a logger: later versions hand over one struct, message included.
void keep(const __android_logger_data* data, const char* message) {
    lines.push_back(std::to_string(data->priority) + " " + data->tag + ": " + message);
}

}  // namespace

LogCapture::LogCapture() {
    lines.clear();
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(keep);
}

LogCapture::~LogCapture() {
    __android_log_set_logger(__android_log_stderr_logger);
    __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
}

std::vector<std::string> LogCapture::take() { return std::exchange(lines, {}); }

}  // namespace Velo::OS::Telemetry::fakes
