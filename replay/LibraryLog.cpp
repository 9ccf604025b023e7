#include "replay/LibraryLog.h"

#include <android/log.h>

#include <string>
#include <utility>

namespace Velo::OS::Telemetry::replay {

namespace {

Console* target = nullptr;
thread_local LibraryLog::Messages* listener = nullptr;

/// A desk's early form of the logger function: liblog of a device passes the message inside the structure.
void show(const __android_logger_data* data, const char* message) {
    if (data->priority < ANDROID_LOG_WARN) return;
    const bool isWarning = data->priority == ANDROID_LOG_WARN;
    const std::string text = isWarning ? message : std::string("error: ") + message;
    // The same may be said several times of one event or schema, for example that it has no salt.
    if (listener) {
        if (listener->empty() || listener->back().text != text) listener->push_back({isWarning, text});
        return;
    }
    thread_local std::string last;
    if (std::exchange(last, text) == text) return;
    isWarning ? target->warning(text) : target->error(text);
}

}  // namespace

LibraryLog::LibraryLog(Console& console) {
    target = &console;
    __android_log_set_logger(&show);
}

LibraryLog::~LibraryLog() {
    __android_log_set_logger(&__android_log_stderr_logger);
    target = nullptr;
}

LibraryLog::Listening::Listening(Messages& messages) : before_(std::exchange(listener, &messages)) {}

LibraryLog::Listening::~Listening() { listener = before_; }

}  // namespace Velo::OS::Telemetry::replay
