#include "telemetry/DeviceInfoApplier.h"

#include <utility>

namespace Velo::OS::Telemetry {

DeviceInfoApplier::DeviceInfoApplier(std::unique_ptr<IApplier> first, std::unique_ptr<IApplier> second,
                                     std::unique_ptr<IApplier> third, std::unique_ptr<IApplier> fourth)
    : IApplier("device_info_applier"),
      first_(std::move(first)),
      second_(std::move(second)),
      third_(std::move(third)),
      fourth_(std::move(fourth)) {}

EventResult DeviceInfoApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    for (IApplier* inner : {first_.get(), second_.get(), third_.get()}) {
        EventResult result = inner->apply(std::move(event));
        if (result.hasError()) return result;
        event = result.takeValue();
    }
    return fourth_->apply(std::move(event));
}

}  // namespace Velo::OS::Telemetry
