#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "telemetry/Export.h"
#include "telemetry/IDiscretionaryAppBypass.h"
#include "telemetry/IEventSchemaHandler.h"
#include "telemetry/IUserAccountState.h"

namespace Velo::OS::Telemetry {

/// Decides by consent and by the event schema which events may be kept. Injected by the service; called with the
/// guard's lock held. Events go by their string identifiers. No pointer that it returns may be null.
///
/// The service was compiled against these slots; the two destructors are entries 1 and 2, and entries that this library
/// does not call are reserved in their places.
class TELEMETRY_EXPORT IEventFilteringManager {
public:
    virtual ~IEventFilteringManager() = default;
    /// Whether events are filtered by consent at all.
    virtual bool isFilterEnabled() = 0;
    /// Whether the user for whom the uid runs has consented.
    virtual bool hasUserConsent(uint32_t uid) = 0;
    virtual std::shared_ptr<IDiscretionaryAppBypass> getDiscretionaryAppBypass() = 0;
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    virtual void reserved9() {}
    /// Whether the event is kept. The meaning of `flag` is the manager's own; this library passes true.
    virtual bool isEventAllowed(const std::string& eventIdentifier, uint32_t uid, const std::string& loggingPackage,
                                bool userConsent, bool flag) = 0;
    /// Whether it would be, were events filtered. The meaning of `flag` is the manager's own; this library passes
    /// false.
    virtual bool isEventAllowedIfFilterEnabled(const std::string& eventIdentifier, bool userConsent,
                                               bool isParviAccount, bool dataUseConsent, bool flag) = 0;
    virtual void reserved12() {}
    virtual void reserved13() {}
    virtual void reserved14() {}
    virtual void reserved15() {}
    virtual std::shared_ptr<IEventSchemaHandler> getEventSchemaHandler() = 0;
    virtual std::shared_ptr<IUserAccountState> getUserAccountState() = 0;
};

}  // namespace Velo::OS::Telemetry
