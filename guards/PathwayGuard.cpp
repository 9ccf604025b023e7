#include "telemetry/PathwayGuard.h"

#include <android/log.h>

#include <utility>

#include "conversion/Immortal.h"
#include "guards/Rejection.h"
#include "telemetry/HealthCounterNames.h"
#include "telemetry/TelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kDropCounter = immortal<std::string>(kGuardPathwayDropped);

}  // namespace

PathwayGuard::PathwayGuard(MonitorEventCallback callback, std::shared_ptr<IHealthCountersManager> healthCounters)
    : IGuard("pathway_guard", std::move(callback)), healthCounters_(std::move(healthCounters)) {}

EventResult PathwayGuard::handle(std::unique_ptr<TelemetryEvent> event) {
    const IntakeFormat format = event->getIntakeFormat();
    if (format == IntakeFormat::GenericAtom) return reject(*event, kDropCounter, *healthCounters_);

    const std::string name = event->name();
    if (!isEventInVerification(name) || isFormatJsonBundle(format)) return event;

    __android_log_print(ANDROID_LOG_DEBUG, "TelemetryService", "PathwayGuard: %s event in verification; dropping %s.",
                        name.c_str(), getFormatName(format).c_str());
    return reject(*event, kDropCounter, *healthCounters_);
}

bool PathwayGuard::isEventInVerification(const std::string& eventName) {
    return TelemetrySettingsManager::instance()->isEventInVerification(eventName);
}

}  // namespace Velo::OS::Telemetry
