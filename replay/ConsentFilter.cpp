#include "replay/ConsentFilter.h"

#include <cutils/multiuser.h>

#include <utility>

#include "telemetry/EventSchemaHandler.h"

namespace Velo::OS::Telemetry::replay {

namespace {

using Category = IEventSchemaHandler::EventCategory;

/// Why events of the category are not kept.
const char* reasonOf(Category category) {
    switch (category) {
        case Category::NonEssential:
            return "filter.no_consent";
        case Category::NonEssentialWithOtherConsent:
            return "filter.no_data_use_consent";
        case Category::NeedsReview:
            return "filter.needs_review";
        case Category::Uncategorized:
            return "filter.uncategorized";
        default:
            return "filter.invalid";
    }
}

}  // namespace

bool isKept(Category category, Consent consent) {
    switch (category) {
        case Category::Essential:
            return true;
        case Category::NonEssential:
            return consent.toNonEssential;
        case Category::NonEssentialWithOtherConsent:
            return consent.toDataUse;
        default:
            return false;
    }
}

ConsentFilter::ConsentFilter(std::shared_ptr<DeviceServices> services, std::shared_ptr<IEventSchemaHandler> schema)
    : services_(std::move(services)), schema_(std::move(schema)) {}

bool ConsentFilter::isEventAllowed(const std::string& eventIdentifier, uint32_t uid, const std::string& loggingPackage,
                                   bool userConsent, bool /*flag*/) {
    last_ = {eventIdentifier, uid, {userConsent, services_->hasDataUseConsent(uid)}};
    return !isFilterEnabled() || services_->isBypassedForDiscretionaryApp(loggingPackage, uid) ||
           isKept(schema_->getEventCategory(eventIdentifier), last_.consent);
}

bool ConsentFilter::isEventAllowedIfFilterEnabled(const std::string& eventIdentifier, bool userConsent,
                                                  bool /*isParviAccount*/, bool dataUseConsent, bool /*flag*/) {
    return isKept(schema_->getEventCategory(eventIdentifier), {userConsent, dataUseConsent});
}

void ConsentFilter::explain(Json::Value& why) const {
    const Category category = schema_->getEventCategory(last_.identifier);
    why["reason"] = reasonOf(category);
    why["identifier"] = last_.identifier;
    why["category"] = EventSchemaHandler::getEventCategoryStr(category);
    why["uid"] = last_.uid;
    why["user"] = multiuser_get_user_id(last_.uid);
    why["consent"] = last_.consent.toNonEssential;
    why["data_use_consent"] = last_.consent.toDataUse;
}

}  // namespace Velo::OS::Telemetry::replay
