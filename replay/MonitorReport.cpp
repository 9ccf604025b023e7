#include "replay/MonitorReport.h"

#include "replay/CompactJson.h"
#include "telemetry/BundleToJson.h"

namespace Velo::OS::Telemetry::replay {

MonitorReport openReport(const android::os::PersistableBundle& envelope, uint32_t uid) {
    MonitorReport report;
    report.uid = uid;
    for (const android::String16& name : envelope.getPersistableBundleKeys()) {
        report.name = android::String8(name).string();
        envelope.getPersistableBundle(name, &report.body);
    }
    return report;
}

std::unique_ptr<TelemetryEventBundle> toEvent(const MonitorReport& report) {
    return std::make_unique<TelemetryEventBundle>(report.name, report.uid, false, report.body);
}

std::string toLine(const MonitorReport& report, const LinePlace& place) {
    Json::Value line;
    line["name"] = report.name;
    line["uid"] = report.uid;
    android::os::PersistableBundle body = report.body;  // the conversion may change it
    convertBundleToJson(body, line["bundle"] = Json::Value(Json::objectValue));
    line["reported_at"] = toText(place);
    return toCompactJson(line);
}

}  // namespace Velo::OS::Telemetry::replay
