#include "telemetry/OSUtilsDeviceIdApplier.h"

#include <android-base/properties.h>

#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kDeviceSerial = immortal<std::string>("device_serial");

}  // namespace

OSUtilsDeviceIdApplier::OSUtilsDeviceIdApplier() : IApplier("osutils_device_id_applier") {}

EventResult OSUtilsDeviceIdApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    event->addString(kDeviceSerial, getDeviceSerialNumber());
    return event;
}

const std::string& OSUtilsDeviceIdApplier::getDeviceSerialNumber() {
    static const std::string& serial = immortal<std::string>(android::base::GetProperty("ro.serialno", "Unknown"));
    return serial;
}

const std::string& OSUtilsDeviceIdApplier::getDeviceModelExtended() {
    static const std::string& model =
        immortal<std::string>(android::base::GetProperty("ro.vendor.product.model_extended", "Unknown"));
    return model;
}

}  // namespace Velo::OS::Telemetry
