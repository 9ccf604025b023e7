#pragma once

#include <memory>
#include <vector>

#include "replay/DeviceServices.h"
#include "replay/PipelineWatch.h"
#include "telemetry/IApplier.h"
#include "telemetry/SequenceNumberManager.h"

namespace Velo::OS::Telemetry::replay {

/// The appliers, in the order in which the service runs them. The watch, which may be null, learns of those that run
/// within another one.
std::vector<std::shared_ptr<IApplier>> makeAppliers(const std::shared_ptr<DeviceServices>& services,
                                                    std::shared_ptr<SequenceNumberManager> sequenceNumbers,
                                                    const std::shared_ptr<PipelineWatch>& watch);

}  // namespace Velo::OS::Telemetry::replay
