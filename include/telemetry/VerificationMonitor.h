#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "telemetry/IMonitor.h"
#include "telemetry/NestingLimit.h"

namespace Velo::OS::Telemetry {

/// "statsd_verification_monitor": reports two fingerprints of each event that is being verified, as
/// "arvo_mobile_telemetry_statsd_verification_monitor", so that who receives the event can tell whether it was lost or
/// altered on its way. Takes no lock. A bundle is converted to JSON for it, which `TelemetryEvent::size` may show.
///
/// One fingerprint is of all fields but "realtime"; the other also leaves out "utl_realtime_ms", "utl_uptime_ms" and
/// "utl_logging_package", which devices add. Each is the lower half of the CityHash64 of the fields' text, in the form
/// of that hash that LLVM's C++ library has for strings on 64-bit targets.
class TELEMETRY_EXPORT VerificationMonitor : public IMonitor {
public:
    static constexpr char kEventName[] = "event_name";
    static constexpr char kEventIdentifier[] = "event_identifier";
    static constexpr char kEventPathway[] = "pathway";
    static constexpr char kOriginalTimestamp[] = "original_utl_realtime_ms";  // the lower half of the ms
    static constexpr char kVerificationHashValue[] = "hash_value";
    static constexpr char kHashWithoutTimestamp[] = "hash_value_without_timestamp";
    static constexpr char kEventFieldsNumber[] = "fields_number";  // those without timestamp

    explicit VerificationMonitor(MonitorEventCallback callback);

    std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) override;
    /// Asks the settings, which are obtained anew for each call.
    virtual bool isEventInVerification(const std::string& eventName);
    /// Whether the settings ask for verbose logging; they are obtained anew, too.
    virtual bool isVerboseEnabled();

    /// The fields of an object as text, KEY:VALUE; for each, in the byte order of their keys, and how many they are.
    /// Keys and values are compact JSON, and so are the keys to leave out: quoted.
    std::pair<std::string, uint32_t> sortEventFields(Json::Value data, std::set<std::string> excludedKeys);
    /// Adds the fields of an object to the map, keys and values as compact JSON. The fields of an object within it
    /// count as its own, at any depth; of several fields with one key the first counts, in the order of the keys.
    /// Adds none of an object that nests deeper than `kMaxNesting`.
    void convertObjectToMap(const Json::Value& object, std::map<std::string, std::string>& fields);
};

}  // namespace Velo::OS::Telemetry
