#pragma once

#include <memory>

#include "replay/DeviceServices.h"
#include "telemetry/SequenceNumberManager.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"

namespace Velo::OS::Telemetry::replay {

/// Adds every applier, in the order in which the service runs them.
void addAppliers(TelemetryEventProcessorBuilder& builder, const std::shared_ptr<DeviceServices>& services,
                 std::shared_ptr<SequenceNumberManager> sequenceNumbers);

}  // namespace Velo::OS::Telemetry::replay
