#include "replay/DevicePipeline.h"

#include <android-base/properties.h>

#include <utility>

#include "platform/settings/HostTelemetrySettings.h"
#include "replay/DeviceServices.h"
#include "telemetry/ApplicationInfoApplier.h"
#include "telemetry/DeviceIDApplier.h"
#include "telemetry/DeviceInfoApplier.h"
#include "telemetry/DeviceSettingApplier.h"
#include "telemetry/IdentityApplier.h"
#include "telemetry/OSUtilsDeviceIdApplier.h"
#include "telemetry/PackageInfoApplier.h"
#include "telemetry/SequenceNumberApplier.h"
#include "telemetry/SessionsApplier.h"
#include "telemetry/SystemPropertyApplier.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TimestampApplier.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// Stands still where the device's description says when it is.
class DeviceClock : public AdjustedClock {
public:
    explicit DeviceClock(const Device::Clock& clock) : clock_(clock) {}

    AdjustedTimestamp getTimestamp() const override {
        const AdjustedTimestamp now = AdjustedClock::getTimestamp();
        return {now.isAdjusted, clock_.timeMs.value_or(now.timestampMs), clock_.bootTimeMs.value_or(now.bootTimeMs)};
    }

private:
    const Device::Clock clock_;
};

}  // namespace

std::shared_ptr<TelemetryEventProcessor> buildDevicePipeline(Device device,
                                                             std::shared_ptr<SequenceNumberManager> sequenceNumbers) {
    for (const auto& [name, value] : device.systemProperties) android::base::SetProperty(name, value);
    const std::shared_ptr<IAppOverrideManager> overrides = device.appOverrides;
    const Device::Clock clock = device.clock;
    const auto services = std::make_shared<DeviceServices>(std::move(device));
    host::setTelemetrySettings(services);

    return TelemetryEventProcessorBuilder(nullptr, nullptr)
        .addApplier(std::make_shared<DeviceInfoApplier>(
            std::make_unique<DeviceIDApplier>(), std::make_unique<OSUtilsDeviceIdApplier>(),
            std::make_unique<DeviceSettingApplier>(), std::make_unique<SystemPropertyApplier>()))
        .addApplier(std::make_shared<IdentityApplier>(services, overrides))
        .addApplier(std::make_shared<ApplicationInfoApplier>(std::make_unique<PackageInfoApplier>(services, overrides),
                                                             overrides))
        .addApplier(std::make_shared<SequenceNumberApplier>(std::move(sequenceNumbers)))
        .addApplier(std::make_shared<SessionsApplier>(services))
        .addApplier(std::make_shared<TimestampApplier>(std::make_shared<DeviceClock>(clock)))
        .build();
}

}  // namespace Velo::OS::Telemetry::replay
