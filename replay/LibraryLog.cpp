#include "replay/LibraryLog.h"

#include <android/log.h>

#include <string>
#include <utility>

namespace Velo::OS::Telemetry::replay {

namespace {

Console* target = nullptr;
thread_local const LinePlace* currentPlace = nullptr;
thread_local bool isMuted = false;

/// A desk's early form of the logger function: liblog of a device passes the message inside the structure.
void show(const __android_logger_data* data, const char* message) {
    if (data->priority < ANDROID_LOG_WARN || isMuted) return;
    // One event may have the same said of it several times, for example that a schema has no salt.
    thread_local std::string last;
    const std::string text = (currentPlace ? toText(*currentPlace) : "") + message;
    if (std::exchange(last, text) == text) return;
    const bool isWarning = data->priority == ANDROID_LOG_WARN;
    const std::string error = std::string("error: ") + message;
    if (currentPlace) {
        isWarning ? target->warning(*currentPlace, message) : target->error(*currentPlace, error);
    } else {
        isWarning ? target->warning(message) : target->error(error);
    }
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

void LibraryLog::setPlace(const LinePlace* place, bool muted) {
    currentPlace = place;
    isMuted = muted;
}

}  // namespace Velo::OS::Telemetry::replay
