#pragma once

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Name and keys of the monitor event in which decisions of the filter are reported.
class TELEMETRY_EXPORT MonitorEventConstants {
public:
    static constexpr char kAuditEventName[] = "telemetry_event_filtering_audit";
    static constexpr char kFilterEventName[] = "filter_event_name";
    static constexpr char kEventCategory[] = "event_category";
    static constexpr char kIsAllowed[] = "is_allowed";
    static constexpr char kEventSchemaTimestamp[] = "event_schema_timestamp";  // of the events themselves too
    static constexpr char kIsBypassedForDiscretionaryApp[] = "is_bypassed_for_discretionary_app";
    static constexpr char kIsParviAccount[] = "is_parvi_account";
    static constexpr char kDataUseConsent[] = "data_use_consent";
    static constexpr char kIsPersonalizationOnly[] = "is_personalization_purpose_only";
    static constexpr char kIsAdsPersonalizationOnly[] = "is_ads_personalization_purpose_only";
    static constexpr char kIsDeveloper[] = "is_developer";
    static constexpr char kIsFilerEnabled[] = "is_filter_enabled";  // Deliberate: services know it misspelt.
    static constexpr char kUserConsent[] = "user_consent";
    static constexpr char kIsAllowedIfFilterEnabled[] = "is_allowed_if_filter_enabled";
};

}  // namespace Velo::OS::Telemetry
