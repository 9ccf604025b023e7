#include "monitors/MonitorEvent.h"

#include <utils/SystemClock.h>

#include "conversion/PlatformText.h"

namespace Velo::OS::Telemetry {

MonitorEvent::MonitorEvent() {
    putLong("utl_uptime_ms", android::uptimeMillis());
    putLong("utl_realtime_ms", android::elapsedRealtime());
}

void MonitorEvent::putBoolean(const char* key, bool value) { body_.putBoolean(toString16(key), value); }

void MonitorEvent::putInt(const char* key, int32_t value) { body_.putInt(toString16(key), value); }

void MonitorEvent::putLong(const char* key, int64_t value) { body_.putLong(toString16(key), value); }

void MonitorEvent::putDouble(const char* key, double value) { body_.putDouble(toString16(key), value); }

void MonitorEvent::putString(const char* key, const std::string& value) {
    body_.putString(toString16(key), toString16(value.c_str()));
}

void MonitorEvent::send(const char* name, uint32_t uid, const MonitorEventCallback& callback) const {
    android::os::PersistableBundle envelope;
    envelope.putPersistableBundle(toString16(name), body_);
    callback(envelope, false, uid);
}

}  // namespace Velo::OS::Telemetry
