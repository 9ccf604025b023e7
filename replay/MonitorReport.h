#pragma once

#include <binder/PersistableBundle.h>

#include <cstdint>
#include <memory>
#include <string>

#include "replay/LinePlace.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::replay {

/// When an event was created, in ms since boot without and with deep sleep.
struct EventTimes {
    int64_t uptimeMs = 0, realtimeMs = 0;
};

EventTimes timesOf(const TelemetryEventBundle& event);

/// A monitor event, kept to be logged as an event of its own.
struct MonitorReport {
    std::string name;
    uint32_t uid = 0;
    android::os::PersistableBundle body;
};

/// Opens the envelope in which a stage sends its report. Its two times become those of the event that it is about: a
/// device reports in the same moment, this machine long after. The report is a fresh one, to be filled where it is to
/// stay: a bundle is costly to copy and cannot be moved.
void openReport(const android::os::PersistableBundle& envelope, uint32_t uid, const EventTimes& times,
                MonitorReport& report);

std::unique_ptr<TelemetryEventBundle> toEvent(const MonitorReport& report);

/// The report as a line of input says it: "name", "uid" and "bundle".
Json::Value toJson(const MonitorReport& report);

/// The report as a line of input, without its newline. The member "reported_at" names the line that brought it about.
std::string toLine(const MonitorReport& report, const LinePlace& place);

}  // namespace Velo::OS::Telemetry::replay
