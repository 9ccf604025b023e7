#pragma once

#include <memory>

#include "telemetry/IApplier.h"
#include "telemetry/SequenceNumberManager.h"

namespace Velo::OS::Telemetry {

/// "seq_num_applier": adds "global_sequence_number" and "per_type_sequence_number". Events that a guard drops draw
/// none.
class TELEMETRY_EXPORT SequenceNumberApplier : public IApplier {
public:
    /// Must not be null.
    explicit SequenceNumberApplier(std::shared_ptr<SequenceNumberManager> sequenceNumberManager);

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<SequenceNumberManager> sequenceNumberManager_;
};

}  // namespace Velo::OS::Telemetry
