#include "telemetry/EventFilterGuard.h"

#include <android-base/properties.h>

#include <utility>

#include "conversion/Immortal.h"
#include "conversion/JsonMember.h"
#include "event/JsonValueOf.h"
#include "guards/Rejection.h"
#include "monitors/MonitorEvent.h"
#include "telemetry/EventSchemaHandler.h"
#include "telemetry/HealthCounterNames.h"
#include "telemetry/MonitorEventCache.h"
#include "telemetry/MonitorEventConstants.h"

namespace Velo::OS::Telemetry {

namespace {

using Keys = MonitorEventConstants;

constexpr char kConsentState[] = "consent_state";
const std::string& kTimestampMember = immortal<std::string>(Keys::kEventSchemaTimestamp);
const std::string& kDropCounter = immortal<std::string>(kGuardFilterDropped);

/// The build of the device, read once in the life of the process.
struct Build {
    const std::string product = android::base::GetProperty("ro.product.name", "");
    const std::string version = android::base::GetProperty("ro.build.version.incremental", "");
};

/// What was found out about an event and decided.
struct Decision {
    std::string identifier;
    std::string loggingPackage;
    uint32_t uid;
    uint64_t schemaTimestamp;
    bool userConsent;
    bool isParviAccount;
    bool dataUseConsent;
    bool isAllowedIfFilterEnabled;
    bool isAllowed;
    bool isFilterEnabled;
};

uint32_t consentStateOf(bool userConsent, IEventFilteringManager& manager) {
    if (!manager.isFilterEnabled()) return 0;
    return userConsent ? 32 : 16;
}

void report(const Decision& decision, const Build& build, IEventSchemaHandler& schema, IEventFilteringManager& manager,
            const MonitorEventCallback& callback) {
    const std::string& identifier = decision.identifier;
    MonitorEvent audit;
    audit.putString(Keys::kFilterEventName, identifier);
    audit.putString(Keys::kEventCategory, EventSchemaHandler::getEventCategoryStr(schema.getEventCategory(identifier)));
    audit.putBoolean(Keys::kIsAllowed, decision.isAllowed);
    audit.putLong(Keys::kEventSchemaTimestamp, static_cast<int64_t>(decision.schemaTimestamp));
    audit.putBoolean(
        Keys::kIsBypassedForDiscretionaryApp,
        manager.getDiscretionaryAppBypass()->isBypassedForDiscretionaryApp(decision.loggingPackage, decision.uid));
    audit.putBoolean(Keys::kIsParviAccount, decision.isParviAccount);
    audit.putBoolean(Keys::kDataUseConsent, decision.dataUseConsent);
    audit.putBoolean(Keys::kIsPersonalizationOnly, schema.isPersonalizationPurposeOnly(identifier));
    audit.putBoolean(Keys::kIsAdsPersonalizationOnly, schema.isAdsPersonalizationPurposeOnly(identifier));
    audit.putString("build_product", build.product);
    audit.putString("build_version", build.version);
    audit.putInt(kConsentState, static_cast<int32_t>(consentStateOf(decision.userConsent, manager)));
    audit.putBoolean(Keys::kIsDeveloper, false);  // Deliberate: reserved and never set.
    audit.putBoolean(Keys::kIsFilerEnabled, decision.isFilterEnabled);
    audit.putBoolean(Keys::kUserConsent, decision.userConsent);
    audit.putBoolean(Keys::kIsAllowedIfFilterEnabled, decision.isAllowedIfFilterEnabled);
    audit.send(Keys::kAuditEventName, decision.uid, callback);
}

/// Where the members of a system event are: some are logged one level down.
const Json::Value& membersOf(const Json::Value& json) {
    const Json::Value& data = memberOf(json, "data");
    return data.empty() ? json : data;
}

/// Attributes a system event to the application that caused it.
void correctUid(const std::string& eventIdentifier, TelemetryEvent& event) {
    // For every event, because this is where a bundle becomes JSON; stages that follow add to that.
    Json::Value copy;
    const Json::Value& json = jsonValueOf(event, copy);
    if (eventIdentifier == "arvo_api_permission_state_event") {
        const Json::Value& members = membersOf(json);
        if (memberOf(members, "source") == "listener") {
            event.setUid(static_cast<unsigned int>(memberOf(members, "android_uid").asInt()));
        }
    } else if (eventIdentifier == "arvo_sensitive_app_ops_monitor") {
        // Deliberate: not asked whether it is there, so an event without it gets uid 0.
        event.setUid(static_cast<unsigned int>(memberOf(membersOf(json), "op_caller_android_uid").asInt()));
    }
}

}  // namespace

EventFilterGuard::EventFilterGuard(MonitorEventCallback callback,
                                   std::shared_ptr<IEventFilteringManager> filteringManager,
                                   std::shared_ptr<IHealthCountersManager> healthCounters)
    : IGuard("event_filter_guard", std::move(callback)),
      filteringManager_(std::move(filteringManager)),
      healthCounters_(std::move(healthCounters)) {}

EventResult EventFilterGuard::handle(std::unique_ptr<TelemetryEvent> event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    static const Build& build = immortal<Build>();
    IEventFilteringManager& manager = *filteringManager_;

    Decision decision{};
    decision.identifier = event->getStringIdentifier();
    correctUid(decision.identifier, *event);
    decision.uid = event->uid();
    decision.userConsent = manager.hasUserConsent(decision.uid);
    const std::shared_ptr<IEventSchemaHandler> schema = manager.getEventSchemaHandler();
    decision.schemaTimestamp = schema->getEventSchemaTimestamp();
    const bool isAudit = decision.identifier == Keys::kAuditEventName;
    if (!isAudit) {
        const uint32_t consentState = setConsentState(decision.userConsent);
        event->addULong(kTimestampMember, decision.schemaTimestamp);
        event->addProperty(kConsentState, std::to_string(consentState));
    }

    const std::shared_ptr<IUserAccountState> account = manager.getUserAccountState();
    decision.isParviAccount = account->isParviAccount(decision.uid);
    decision.dataUseConsent = account->hasDataUseConsent(decision.uid);
    decision.isAllowedIfFilterEnabled = manager.isEventAllowedIfFilterEnabled(
        decision.identifier, decision.userConsent, decision.isParviAccount, decision.dataUseConsent, false);
    decision.loggingPackage = event->loggingPackage();
    decision.isAllowed =
        manager.isEventAllowed(decision.identifier, decision.uid, decision.loggingPackage, decision.userConsent, true);
    decision.isFilterEnabled = manager.isFilterEnabled();

    // Keyed on what filtering would do, so that a decision is known before it begins to count.
    const bool isKnown = MonitorEventCache::checkAndSetFilterDecisionCache(decision.uid, decision.identifier,
                                                                           decision.isAllowedIfFilterEnabled);
    if (!isKnown && !isAudit) report(decision, build, *schema, manager, callback_);

    if (decision.isAllowed) return event;
    return reject(*event, kDropCounter, *healthCounters_);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): services were compiled against a parameter by value.
std::unique_ptr<TelemetryEvent> EventFilterGuard::setOriginalUid(std::string eventIdentifier,
                                                                 std::unique_ptr<TelemetryEvent> event) {
    correctUid(eventIdentifier, *event);
    return event;
}

uint32_t EventFilterGuard::setConsentState(bool userConsent) { return consentStateOf(userConsent, *filteringManager_); }

}  // namespace Velo::OS::Telemetry
