#pragma once

#include "telemetry/IApplier.h"

namespace Velo::OS::Telemetry {

/// "system_property_applier": adds nothing; it keeps its name in the pipeline.
class TELEMETRY_EXPORT SystemPropertyApplier : public IApplier {
public:
    SystemPropertyApplier();

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;
};

}  // namespace Velo::OS::Telemetry
