#pragma once

#include <memory>

#include "replay/Device.h"
#include "telemetry/SequenceNumberManager.h"
#include "telemetry/TelemetryEventProcessor.h"

namespace Velo::OS::Telemetry::replay {

/// The pipeline as the service builds it, on that device. Sets the settings and the system properties of the process,
/// and the library keeps what it has once read of them: one device in the life of a process.
std::shared_ptr<TelemetryEventProcessor> buildDevicePipeline(Device device,
                                                             std::shared_ptr<SequenceNumberManager> sequenceNumbers);

}  // namespace Velo::OS::Telemetry::replay
