#pragma once

#include <json/value.h>

#include <memory>
#include <string>

#include "replay/DeviceServices.h"
#include "telemetry/IEventFilteringManager.h"

namespace Velo::OS::Telemetry::replay {

/// What the user of an event has consented to.
struct Consent {
    bool toNonEssential = false;
    bool toDataUse = false;
};

/// Whether filtering keeps events of the category: essential ones always, non-essential ones with the consent that is
/// asked for, and no others.
bool isKept(IEventSchemaHandler::EventCategory category, Consent consent);

/// Filters by the consent of the users of a device and by an event schema. While the device does not filter, and for
/// its discretionary applications, all is kept. For one thread at a time.
class ConsentFilter : public IEventFilteringManager {
public:
    ConsentFilter(std::shared_ptr<DeviceServices> services, std::shared_ptr<IEventSchemaHandler> schema);

    bool isFilterEnabled() override { return services_->device().filter.enabled; }
    bool hasUserConsent(uint32_t uid) override { return services_->hasConsent(uid); }
    std::shared_ptr<IDiscretionaryAppBypass> getDiscretionaryAppBypass() override { return services_; }
    bool isEventAllowed(const std::string& eventIdentifier, uint32_t uid, const std::string& loggingPackage,
                        bool userConsent, bool flag) override;
    bool isEventAllowedIfFilterEnabled(const std::string& eventIdentifier, bool userConsent, bool isParviAccount,
                                       bool dataUseConsent, bool flag) override;
    std::shared_ptr<IEventSchemaHandler> getEventSchemaHandler() override { return schema_; }
    std::shared_ptr<IUserAccountState> getUserAccountState() override { return services_; }

    /// Adds why the last event was not allowed: "reason", "identifier", "category", "uid", "user" and what that one has
    /// consented to.
    void explain(Json::Value& why) const;

private:
    struct Judged {
        std::string identifier;
        uint32_t uid = 0;
        Consent consent;
    };

    const std::shared_ptr<DeviceServices> services_;
    const std::shared_ptr<IEventSchemaHandler> schema_;
    Judged last_;
};

}  // namespace Velo::OS::Telemetry::replay
