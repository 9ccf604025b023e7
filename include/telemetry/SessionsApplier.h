#pragma once

#include <memory>

#include "telemetry/IApplier.h"
#include "telemetry/ISessionManager.h"

namespace Velo::OS::Telemetry {

/// "sessions_applier": adds the session context "__sessions_v2" to an event that has none; and the legacy one,
/// "__sessions", to every event if the manager says so, else to the events that need it always.
class TELEMETRY_EXPORT SessionsApplier : public IApplier {
public:
    /// Must not be null.
    explicit SessionsApplier(std::shared_ptr<ISessionManager> sessionManager);

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<ISessionManager> sessionManager_;
};

}  // namespace Velo::OS::Telemetry
