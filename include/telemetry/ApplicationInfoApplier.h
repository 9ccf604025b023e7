#pragma once

#include <memory>

#include "telemetry/IAppOverrideManager.h"
#include "telemetry/IApplier.h"

namespace Velo::OS::Telemetry {

/// "application_info_applier": runs another applier under this name, which is traced, counted and blocked instead.
class TELEMETRY_EXPORT ApplicationInfoApplier : public IApplier {
public:
    /// The inner applier must not be null. The override manager is kept and not asked.
    ApplicationInfoApplier(std::unique_ptr<IApplier> inner, std::shared_ptr<IAppOverrideManager> overrideManager);

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::unique_ptr<IApplier> inner_;
    std::shared_ptr<IAppOverrideManager> overrideManager_;
};

}  // namespace Velo::OS::Telemetry
