#include "replay/MonitorReport.h"

#include "replay/CompactJson.h"
#include "replay/Escape.h"
#include "replay/StrictJson.h"
#include "telemetry/BundleToJson.h"

namespace Velo::OS::Telemetry::replay {

EventTimes timesOf(const TelemetryEventBundle& event) {
    const int64_t realtimeMs = event.clientCreatedTime();
    const Json::Value uptimeMs = event.getFromEventMetadata("utl_uptime_ms");
    return {isIntegerLiteral(uptimeMs) && uptimeMs.isInt64() ? uptimeMs.asInt64() : realtimeMs, realtimeMs};
}

void openReport(const android::os::PersistableBundle& envelope, uint32_t uid, const EventTimes& times,
                MonitorReport& report) {
    report.uid = uid;
    for (const android::String16& name : envelope.getPersistableBundleKeys()) {
        report.name = android::String8(name).c_str();
        envelope.getPersistableBundle(name, &report.body);
    }
    report.body.putLong(android::String16("utl_uptime_ms"), times.uptimeMs);
    report.body.putLong(android::String16("utl_realtime_ms"), times.realtimeMs);
}

std::unique_ptr<TelemetryEventBundle> toEvent(const MonitorReport& report) {
    return std::make_unique<TelemetryEventBundle>(report.name, report.uid, false, report.body);
}

Json::Value toJson(const MonitorReport& report) {
    Json::Value json;
    json["name"] = report.name;
    json["uid"] = report.uid;
    android::os::PersistableBundle body = report.body;  // the conversion may change it
    convertBundleToJson(body, json["bundle"] = Json::Value(Json::objectValue));
    return json;
}

std::string toLine(const MonitorReport& report, const LinePlace& place) {
    Json::Value line = toJson(report);
    line["reported_at"] = escaped(toText(place));
    return toCompactJson(line);
}

}  // namespace Velo::OS::Telemetry::replay
