#pragma once

#include <memory>
#include <string>

#include "telemetry/EventResult.h"
#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Enriches an event that the guards have let through.
///
/// `apply` may run on several threads at once. It takes the event and returns it with fields added, or an error, which
/// ends processing and reaches the caller of the pipeline unchanged; the event is then lost. An empty result aborts the
/// process.
class TELEMETRY_EXPORT IApplier {
public:
    /// `name` is the stage name: it labels trace slices, names the stage's counter and is looked up in the blocklist.
    explicit IApplier(std::string name);
    IApplier(const IApplier&) = delete;
    IApplier& operator=(const IApplier&) = delete;
    virtual ~IApplier();

    virtual EventResult apply(std::unique_ptr<TelemetryEvent> event) = 0;

    std::string name_;
};

}  // namespace Velo::OS::Telemetry
