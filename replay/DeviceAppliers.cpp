#include "replay/DeviceAppliers.h"

#include <utility>

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

void addAppliers(TelemetryEventProcessorBuilder& builder, const std::shared_ptr<DeviceServices>& services,
                 std::shared_ptr<SequenceNumberManager> sequenceNumbers) {
    const std::shared_ptr<IAppOverrideManager>& overrides = services->device().appOverrides;
    builder
        .addApplier(std::make_shared<DeviceInfoApplier>(
            std::make_unique<DeviceIDApplier>(), std::make_unique<OSUtilsDeviceIdApplier>(),
            std::make_unique<DeviceSettingApplier>(), std::make_unique<SystemPropertyApplier>()))
        .addApplier(std::make_shared<IdentityApplier>(services, overrides))
        .addApplier(std::make_shared<ApplicationInfoApplier>(std::make_unique<PackageInfoApplier>(services, overrides),
                                                             overrides))
        .addApplier(std::make_shared<SequenceNumberApplier>(std::move(sequenceNumbers)))
        .addApplier(std::make_shared<SessionsApplier>(services))
        .addApplier(std::make_shared<TimestampApplier>(std::make_shared<DeviceClock>(services->device().clock)));
}

}  // namespace Velo::OS::Telemetry::replay
