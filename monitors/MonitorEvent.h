#pragma once

#include <binder/PersistableBundle.h>

#include <cstdint>
#include <string>

#include "telemetry/MonitorEventCallback.h"

namespace Velo::OS::Telemetry {

/// A report of a stage to the service. Keys and texts are UTF-8 and end at their first NUL.
class MonitorEvent {
public:
    /// Begins with "utl_uptime_ms" and "utl_realtime_ms", the ms since boot without and with deep sleep.
    MonitorEvent();

    void putBoolean(const char* key, bool value);
    void putInt(const char* key, int32_t value);
    void putLong(const char* key, int64_t value);
    void putDouble(const char* key, double value);
    void putString(const char* key, const std::string& value);

    /// Hands the event to the callback under its name, as logged by the uid. Throws what the callback throws, and
    /// `std::bad_function_call` if it is empty.
    void send(const char* name, uint32_t uid, const MonitorEventCallback& callback) const;

private:
    android::os::PersistableBundle body_;
};

}  // namespace Velo::OS::Telemetry
