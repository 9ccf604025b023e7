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

/// An applier that runs within another one.
class InnerApplier : public IApplier {
public:
    InnerApplier(std::unique_ptr<IApplier> applier, std::shared_ptr<PipelineWatch> watch)
        : IApplier(applier->name_), applier_(std::move(applier)), watch_(std::move(watch)) {}

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override {
        if (Journey* journey = watch_->journey()) journey->enterWithin(name_);
        return applier_->apply(std::move(event));
    }

private:
    const std::unique_ptr<IApplier> applier_;
    const std::shared_ptr<PipelineWatch> watch_;
};

}  // namespace

std::vector<std::shared_ptr<IApplier>> makeAppliers(const std::shared_ptr<DeviceServices>& services,
                                                    std::shared_ptr<SequenceNumberManager> sequenceNumbers,
                                                    const std::shared_ptr<PipelineWatch>& watch) {
    const auto inner = [&](std::unique_ptr<IApplier> applier) -> std::unique_ptr<IApplier> {
        if (!watch) return applier;
        return std::make_unique<InnerApplier>(std::move(applier), watch);
    };
    const std::shared_ptr<IAppOverrideManager>& overrides = services->device().appOverrides;
    return {
        std::make_shared<DeviceInfoApplier>(
            inner(std::make_unique<DeviceIDApplier>()), inner(std::make_unique<OSUtilsDeviceIdApplier>()),
            inner(std::make_unique<DeviceSettingApplier>()), inner(std::make_unique<SystemPropertyApplier>())),
        std::make_shared<IdentityApplier>(services, overrides),
        std::make_shared<ApplicationInfoApplier>(inner(std::make_unique<PackageInfoApplier>(services, overrides)),
                                                 overrides),
        std::make_shared<SequenceNumberApplier>(std::move(sequenceNumbers)),
        std::make_shared<SessionsApplier>(services),
        std::make_shared<TimestampApplier>(std::make_shared<DeviceClock>(services->device().clock)),
    };
}

}  // namespace Velo::OS::Telemetry::replay
