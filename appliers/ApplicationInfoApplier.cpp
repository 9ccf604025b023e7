#include "telemetry/ApplicationInfoApplier.h"

#include <utility>

namespace Velo::OS::Telemetry {

ApplicationInfoApplier::ApplicationInfoApplier(std::unique_ptr<IApplier> inner,
                                               std::shared_ptr<IAppOverrideManager> overrideManager)
    : IApplier("application_info_applier"), inner_(std::move(inner)), overrideManager_(std::move(overrideManager)) {}

EventResult ApplicationInfoApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    return inner_->apply(std::move(event));
}

}  // namespace Velo::OS::Telemetry
