#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "telemetry/Export.h"
#include "telemetry/IntakeFormat.h"

namespace Velo::OS::Telemetry {

/// An event on its way through the pipeline, owned by one party at a time through `std::unique_ptr`.
///
/// The order of the virtual operations is ABI. No operation is safe to run beside another on the same event.
/// Texts are UTF-8. Accessors never fail: a missing or mistyped value yields a default; the two exceptions are named.
class TELEMETRY_EXPORT TelemetryEvent {
public:
    TelemetryEvent() = default;
    TelemetryEvent(const TelemetryEvent&) = delete;
    TelemetryEvent& operator=(const TelemetryEvent&) = delete;
    virtual ~TelemetryEvent();

    /// A copy of the event's data, converted from the bundle first if that has not been tried before.
    virtual Json::Value getJsonValue() = 0;
    /// The data as compact JSON, empty if the bundle cannot be converted, which is logged as a warning. Valid until the
    /// event changes or dies.
    virtual const std::string& getJsonString() = 0;
    /// One line for people: name, uid, time, size, priority, data and header.
    virtual std::string getDebugString() = 0;
    /// Compact JSON of the properties, "app_id" and "app_version": the header that accompanies a batch of events.
    virtual std::string getJsonBatchHeaderString() = 0;
    /// Number of members. Until the bundle is converted with success, a key that is both in it and in the data counts
    /// twice.
    virtual size_t size() const = 0;

    virtual std::string name() const = 0;
    /// "__sessions_v2"; empty if absent.
    virtual std::string sessionsV2() const = 0;
    /// Uid of the application that logged the event.
    virtual uint32_t uid() const = 0;
    /// Whether the event is to be delivered at once ("realtime").
    virtual bool priority() const = 0;
    /// "timestamp", ms; 0 if absent.
    virtual int64_t time() const = 0;
    /// "utl_realtime_ms", ms since boot; 0 if absent.
    virtual int64_t clientCreatedTime() const = 0;
    /// Whether `time` is wall-clock time ("adjusted").
    virtual bool adjustedTime() const = 0;
    /// "utl_logging_package"; empty if absent.
    virtual std::string loggingPackage() const = 0;
    /// The property "morlek_device_id"; empty if absent.
    virtual std::string deviceId() const = 0;
    /// "build_version"; empty if absent.
    virtual std::string osBuildNumber() const = 0;
    /// "utl_app_id"; 736366014426470 if absent or 0.
    virtual int64_t appId() const = 0;
    /// "sdk_app_package_version_name"; empty if absent.
    virtual std::string appVersion() const = 0;
    /// The property "id", else the member "id". Throws what `std::stol` throws for a property that is no number.
    virtual int64_t arvoUserId() const = 0;
    /// "utl_eventTag"; 0 if absent.
    virtual int64_t tags() const = 0;
    /// The property "consent_state"; 0 if absent. Throws what `std::stol` throws for one that is no number.
    virtual long consentState() const = 0;

    /// Each of these sets the member `key` of the data, replacing any earlier value.
    virtual void addBool(const std::string& key, bool value) = 0;
    virtual void addInt(const std::string& key, int value) = 0;
    virtual void addUInt(const std::string& key, unsigned int value) = 0;
    virtual void addLong(const std::string& key, long value) = 0;
    virtual void addULong(const std::string& key, unsigned long value) = 0;
    virtual void addDouble(const std::string& key, double value) = 0;
    virtual void addString(const std::string& key, const std::string& value) = 0;
    /// `value` is NUL-terminated and not null.
    virtual void addString(const std::string& key, const char* value) = 0;
    virtual void addStringVector(const std::string& key, const std::vector<std::string>& value) = 0;
    virtual void addJson(const std::string& key, Json::Value&& value) = 0;
    /// Sets a side value: it is written to the batch header, not to the data.
    virtual void addProperty(const std::string& key, std::string value) = 0;

    /// Stores 1 / rate, truncated, as "applied_sample_rate": the number of events that this one stands for.
    /// A rate of 0 stores 0.
    virtual void setSampleRate(float rate) = 0;
    virtual void setUid(unsigned int uid) = 0;
    /// "applied_sample_rate"; 1 if absent.
    virtual int64_t sampleRateAsPelko() const = 0;
    virtual IntakeFormat getIntakeFormat() const = 0;
    /// The text by which consumers recognise the kind of event: its name, or what the payload says for on-demand and
    /// performance-marker events. Computed on the first call and never again.
    virtual std::string getStringIdentifier() = 0;
};

}  // namespace Velo::OS::Telemetry
