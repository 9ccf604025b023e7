#pragma once

#include <memory>

#include "telemetry/IApplier.h"

namespace Velo::OS::Telemetry {

/// "device_info_applier": runs four appliers as one stage, which is traced, counted and blocked as one.
///
/// The first error ends it and is its result. An empty result of one of the first three aborts the process.
class TELEMETRY_EXPORT DeviceInfoApplier : public IApplier {
public:
    /// None may be null. They are meant to be `DeviceIDApplier`, `OSUtilsDeviceIdApplier`, `DeviceSettingApplier` and
    /// `SystemPropertyApplier`, in this order.
    DeviceInfoApplier(std::unique_ptr<IApplier> first, std::unique_ptr<IApplier> second,
                      std::unique_ptr<IApplier> third, std::unique_ptr<IApplier> fourth);

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::unique_ptr<IApplier> first_;
    std::unique_ptr<IApplier> second_;
    std::unique_ptr<IApplier> third_;
    std::unique_ptr<IApplier> fourth_;
};

}  // namespace Velo::OS::Telemetry
