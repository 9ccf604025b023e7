#pragma once

#include <memory>

#include "telemetry/IAppOverrideManager.h"
#include "telemetry/IApplier.h"
#include "telemetry/IIdentityManager.h"

namespace Velo::OS::Telemetry {

/// "identity_applier": sets the property "id" of an event that has no user id yet: the application's override if
/// that is a text (up to its first NUL), else what the identity manager says, else "0". Throws what
/// `TelemetryEvent::arvoUserId` throws.
class TELEMETRY_EXPORT IdentityApplier : public IApplier {
public:
    /// Neither may be null.
    IdentityApplier(std::shared_ptr<IIdentityManager> identityManager,
                    std::shared_ptr<IAppOverrideManager> overrideManager);

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<IIdentityManager> identityManager_;
    std::shared_ptr<IAppOverrideManager> overrideManager_;
};

}  // namespace Velo::OS::Telemetry
