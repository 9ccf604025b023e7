#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "appliers/SessionExemptEvents.h"
#include "fuzz/JsonProperties.h"
#include "fuzz/Services.h"

namespace Velo::OS::Telemetry::fuzz {

/// What is to become of an event in a pipeline of all stages, as their documentation reads, with no thought of speed.
/// Only what hangs on a clock, or on what the process saw first, is taken from what was seen.
class PlainPipeline {
public:
    enum class End { Kept, Dropped, Thrown };
    using Calls = std::vector<std::string>;

    /// Both must outlive it. `twin` is an event like the one that was processed; `calls` are those that the pipeline
    /// made meanwhile.
    PlainPipeline(TelemetryEventBundle& twin, const Services& services, const Calls& calls)
        : twin_(twin), services_(services), text_(twin.getJsonString()), filteredUid_(filteredUid()) {
        run(wasLimited(calls));
    }

    End end() const { return end_; }
    /// Of the managers: each stage that is entered, and the counter of the guard that drops the event.
    const Calls& calls() const { return calls_; }

    void requireLike(TelemetryEvent& kept) const {
        const std::string text = kept.getJsonString();
        requireEqual(kept.getStringIdentifier(), twin_.getStringIdentifier(), "A kept event has its identifier");
        requireEqual(kept.name(), twin_.name(), "A kept event has its name");
        require(kept.getIntakeFormat() == twin_.getIntakeFormat(), "A kept event has its format", text);
        require(kept.uid() == filteredUid_, "A kept event has its uid, or the one in its data", text);
        require(text.empty() == text_.empty(), "What can be written before can be after", text + "\n" + text_);
        if (!text.empty())
            requireEqual(text, jsoncppText(data(kept.getJsonValue())), "Stages add what they are to add");
        requireEqual(kept.getJsonBatchHeaderString(), jsoncppText(header(kept)), "The header is what stages make it");
    }

private:
    static constexpr char kCheckpointReport[] = "arvo_telemetry_checkpoint_status_monitor";
    static constexpr char kOpsEvent[] = "arvo_sensitive_app_ops_monitor";
    static constexpr char kPermissionEvent[] = "arvo_api_permission_state_event";

    bool isAudit() const { return twin_.getStringIdentifier() == "telemetry_event_filtering_audit"; }
    bool isPassedOver() const { return twin_.name() == "telemetry_event_filtering_performance"; }

    /// None if the data holds something else where the uid should be, of which the library throws.
    std::optional<uint32_t> filteredUid() const {
        const std::string identifier = twin_.getStringIdentifier();
        const Json::Value data = twin_.getJsonValue();
        const bool isPermission = identifier == kPermissionEvent;
        if (!isPermission && identifier != kOpsEvent) return twin_.uid();
        const Json::Value inner = data.isObject() ? data["data"] : Json::Value();
        const Json::Value& members = inner.empty() ? data : inner;
        if (!members.isObject()) return isPermission ? twin_.uid() : 0;
        if (isPermission && members["source"] != "listener") return twin_.uid();
        const Json::Value& uid = members[isPermission ? "android_uid" : "op_caller_android_uid"];
        return uid.isConvertibleTo(Json::intValue) ? std::optional(static_cast<uint32_t>(uid.asInt())) : std::nullopt;
    }

    /// Whether the limiter drops it, if it gets there. Limits are asked for once in the process. A bucket fills up with
    /// time; an unlimited one and one of no tokens do not change.
    bool wasLimited(const Calls& calls) const {
        const std::string identifier = twin_.getStringIdentifier();
        static auto& limits = *new std::map<std::string, RateLimitConfig>;
        if (std::count(calls.begin(), calls.end(), "limit of " + identifier) > 0) {
            require(limits.emplace(identifier, services_.guards->rateLimit).second, "A limit is asked for once");
        }
        const auto limit = limits.find(identifier);
        if (!isFormatJsonBundle(twin_.getIntakeFormat()) || limit == limits.end()) return false;
        if (limit->second.refillCount < 0 || limit->second.maxEvents < 0) return false;
        const std::string drop = "count guard_rate_limit_dropped 1 of " + twin_.name();
        return limit->second.maxEvents == 0 || std::count(calls.begin(), calls.end(), drop) > 0;
    }

    void run(bool isLimited) {
        const fakes::FakeGuardServices& guards = *services_.guards;
        const std::string name = twin_.name();
        const IntakeFormat format = twin_.getIntakeFormat();
        const bool isOddPathway = services_.settings->inVerification && !isFormatJsonBundle(format);
        const bool isCheckpointed = name != kCheckpointReport && guards.checkpointed.count(twin_.uid()) > 0;
        for (const char* monitor : {"intake_monitor", "size_limiter_monitor", "statsd_verification_monitor"}) {
            enter(monitor, twin_.uid());
        }
        guard("telemetry_state_guard", !services_.settings->enabled, "");
        guard("pathway_guard", format == IntakeFormat::GenericAtom || isOddPathway, "guard_pathway_dropped");
        guard("account_checkpoint_guard", isCheckpointed, "guard_account_checkpointed_dropped");
        guard("event_filter_guard", guards.refused.count(twin_.getStringIdentifier()) > 0, "guard_filter_dropped");
        guard("rate_limiter_guard", isLimited, "guard_rate_limit_dropped");
        guard("dynamic_telemetry_guard", guards.unwanted.count(name) > 0, "guard_dynamic_telemetry_dropped");
        if (end_ != End::Kept) return;
        if (!isPassedOver()) enter("device_info_applier", *filteredUid_);
        if (!isPassedOver()) enter("identity_applier", *filteredUid_);
        enter("application_info_applier", *filteredUid_);
        enter("seq_num_applier", *filteredUid_, " of " + name);
        enter("sessions_applier", *filteredUid_);
        enter("timestamp_applier", *filteredUid_);
    }

    void enter(const std::string& stage, uint32_t uid, const std::string& of = {}) {
        calls_.push_back("trace " + twin_.getStringIdentifier() + " " + std::to_string(uid) + " " + stage);
        calls_.push_back("count processor_" + stage + " 1" + of);
    }

    void guard(const std::string& stage, bool drops, const std::string& counter) {
        if (end_ != End::Kept) return;
        const bool isFilter = stage == "event_filter_guard";
        enter(stage, isFiltered_ ? *filteredUid_ : twin_.uid());
        if (isFilter && !filteredUid_) {
            end_ = End::Thrown;
            return;
        }
        isFiltered_ = isFiltered_ || isFilter;
        if (!drops) return;
        end_ = End::Dropped;
        if (!counter.empty()) calls_.push_back("count " + counter + " 1 of " + twin_.name());
    }

    /// `seen` is the data of the kept event.
    Json::Value data(const Json::Value& seen) const {
        const fakes::FakeServices& appliers = *services_.appliers;
        Json::Value data = twin_.getJsonValue();
        const bool isExempt = std::count(kSessionExemptEvents.begin(), kSessionExemptEvents.end(), twin_.name()) > 0;
        const bool hasSessions = (appliers.attachToAll || isExempt) && !appliers.sessions.isNull();
        if (!isAudit()) data["event_schema_timestamp"] = Json::UInt64{services_.guards->schemaTimestamp};
        data["dynamic_telemetry_config_id"] = services_.guards->configId;
        data["applied_sample_rate"] = number(seen, "applied_sample_rate");
        if (!isPassedOver()) addDevice(seen, data);
        data["sdk_app_package"] = appliers.package.packageName;
        data["sdk_app_package_version_name"] = overridden("version_name", appliers.package.versionName);
        data["sdk_app_package_version_code"] = overridden("version_code", Json::Int64{appliers.package.versionCode});
        data["fg_app_package_name"] = appliers.foreground.packageName;
        data["fg_app_package_version"] = appliers.foreground.versionName;
        data["global_sequence_number"] = Json::UInt64{appliers.global};
        data["per_type_sequence_number"] = Json::UInt64{appliers.perType};
        if (twin_.sessionsV2().empty()) data["__sessions_v2"] = appliers.sessionsV2;
        if (hasSessions) data["__sessions"] = appliers.sessions;
        data["adjusted"] = services_.settings->clockAdjusted;
        data["timestamp"] = number(seen, "timestamp");
        return data;
    }

    void addDevice(const Json::Value& seen, Json::Value& data) const {
        require(seen["device_serial"].isString(), "The serial number of the device is a text");
        data["device_serial"] = seen["device_serial"];
        data["managed_mode"] = services_.settings->managedMode;
        data["account_mode"] = services_.settings->accountMode ? 1 : -1;
    }

    static Json::UInt64 number(const Json::Value& seen, const char* member) {
        require(seen[member].isUInt64(), "This member is an unsigned number", member);
        return seen[member].asUInt64();
    }

    Json::Value overridden(const std::string& what, const Json::Value& other) const {
        const auto found = services_.appliers->overrides.find("sdk_app_package_" + what);
        return found == services_.appliers->overrides.end() ? other : found->second;
    }

    Json::Value header(const TelemetryEvent& kept) const {
        Json::Value header;
        header["app_id"] = Json::Int64{kept.appId()};
        header["app_version"] = kept.appVersion();
        const int consented = services_.guards->consents ? 32 : 16;
        if (!isAudit()) header["consent_state"] = std::to_string(services_.guards->filters ? consented : 0);
        if (isPassedOver()) return header;
        header["morlek_device_id"] = kept.deviceId();
        if (twin_.arvoUserId() != 0) return header;
        const auto found = services_.appliers->overrides.find("id");
        const bool isOverridden = found != services_.appliers->overrides.end() && found->second.isString();
        const std::string id = isOverridden ? found->second.asString() : services_.appliers->userId;
        header["id"] = id.empty() ? "0" : id;
        return header;
    }

    TelemetryEventBundle& twin_;
    const Services& services_;
    const std::string text_;  // of the event before
    const std::optional<uint32_t> filteredUid_;
    bool isFiltered_ = false;
    End end_ = End::Kept;
    Calls calls_;
};

}  // namespace Velo::OS::Telemetry::fuzz
