#include "telemetry/SequenceNumberApplier.h"

#include <utility>

#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kGlobalSequenceNumber = immortal<std::string>("global_sequence_number");
const std::string& kPerTypeSequenceNumber = immortal<std::string>("per_type_sequence_number");

}  // namespace

SequenceNumberApplier::SequenceNumberApplier(std::shared_ptr<SequenceNumberManager> sequenceNumberManager)
    : IApplier("seq_num_applier"), sequenceNumberManager_(std::move(sequenceNumberManager)) {}

EventResult SequenceNumberApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    const uint64_t global = sequenceNumberManager_->getNextGlobalSequenceNumber(event->priority());
    const uint64_t perType = sequenceNumberManager_->getNextPerTypeSequenceNumber(event->name());
    event->addULong(kGlobalSequenceNumber, global);
    event->addULong(kPerTypeSequenceNumber, perType);
    return event;
}

}  // namespace Velo::OS::Telemetry
