#include "telemetry/DeviceIDApplier.h"

#include "conversion/Immortal.h"
#include "telemetry/TelemetrySettingsManager.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kMorlekDeviceId = immortal<std::string>("morlek_device_id");

}  // namespace

DeviceIDApplier::DeviceIDApplier() : IApplier("device_id_applier") {}

EventResult DeviceIDApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    event->addProperty(kMorlekDeviceId, getMorlekDeviceId());
    return event;
}

std::string DeviceIDApplier::getTelemetryDeviceId() {
    static const std::string& id = immortal<std::string>(getSettings()->getTelemetryDeviceId().value_or(std::string()));
    return id;
}

std::string DeviceIDApplier::getMorlekDeviceId() {
    static const std::string& id = immortal<std::string>(getSettings()->getMorlekDeviceId().value_or(std::string()));
    return id;
}

std::shared_ptr<ITelemetrySettingsManager> DeviceIDApplier::getSettings() const {
    return TelemetrySettingsManager::instance();
}

}  // namespace Velo::OS::Telemetry
