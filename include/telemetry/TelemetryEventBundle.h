#pragma once

#include <binder/PersistableBundle.h>

#include <map>
#include <optional>
#include <string_view>

#include "telemetry/NestingLimit.h"
#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// The event: a platform bundle or a JSON document, plus what the stages add.
///
/// The bundle is never modified. Added values live in the data beside it; the first operation that needs the whole
/// data as JSON converts the bundle into it, once. Added values win over the bundle's scalars and string vectors;
/// nested bundles are merged into added objects, and fail the conversion where another value was added: then there is
/// no text.
///
/// The data nests no deeper than `kMaxNesting`: see `NestingLimit.h`. Bundles are copied before their depth is known.
///
/// The data members and their order are ABI: services allocate events themselves.
class TELEMETRY_EXPORT TelemetryEventBundle : public TelemetryEvent {
public:
    /// A bundle event; the bundle is copied.
    TelemetryEventBundle(const std::string& name, unsigned int uid, bool realtime,
                         const android::os::PersistableBundle& bundle);
    /// A bundle event with an empty bundle.
    TelemetryEventBundle(const std::string& name, unsigned int uid, bool realtime);
    /// A JSON event, never realtime. `data` is to be an object (or null, which counts as an empty one); with anything
    /// else, and with what nests deeper than `kMaxNesting`, no member can be read or added, and the JSON text is empty.
    TelemetryEventBundle(const std::string& name, Json::Value data, unsigned int uid, IntakeFormat format);
    /// Deliberate: properties, conversion state and both caches do not come along, so a moved event is converted anew,
    /// which fails if its data already holds an array from a nested bundle. The bundle is copied, so it may throw.
    TelemetryEventBundle(TelemetryEventBundle&& other);
    /// Deliberate: only the bundle (copied) and the document are replaced.
    TelemetryEventBundle& operator=(TelemetryEventBundle&& other);
    ~TelemetryEventBundle() override;

    /// Equal bundles and equal documents; uid, properties and format take no part. Deliberate: neither side is const.
    bool operator==(TelemetryEventBundle& other);

    Json::Value getJsonValue() override;
    const std::string& getJsonString() override;
    std::string getDebugString() override;
    std::string getJsonBatchHeaderString() override;
    size_t size() const override;

    std::string name() const override;
    std::string sessionsV2() const override;
    uint32_t uid() const override;
    bool priority() const override;
    int64_t time() const override;
    int64_t clientCreatedTime() const override;
    bool adjustedTime() const override;
    std::string loggingPackage() const override;
    std::string deviceId() const override;
    std::string osBuildNumber() const override;
    int64_t appId() const override;
    std::string appVersion() const override;
    int64_t arvoUserId() const override;
    int64_t tags() const override;
    long consentState() const override;

    void addBool(const std::string& key, bool value) override;
    void addInt(const std::string& key, int value) override;
    void addUInt(const std::string& key, unsigned int value) override;
    void addLong(const std::string& key, long value) override;
    void addULong(const std::string& key, unsigned long value) override;
    void addDouble(const std::string& key, double value) override;
    void addString(const std::string& key, const std::string& value) override;
    void addString(const std::string& key, const char* value) override;
    void addStringVector(const std::string& key, const std::vector<std::string>& value) override;
    void addJson(const std::string& key, Json::Value&& value) override;
    void addProperty(const std::string& key, std::string value) override;

    void setSampleRate(float rate) override;
    void setUid(unsigned int uid) override;
    int64_t sampleRateAsPelko() const override;
    IntakeFormat getIntakeFormat() const override;
    std::string getStringIdentifier() override;

    /// The value under `key`: from the data, else, until the bundle has been converted with success, a scalar of the
    /// bundle, else null.
    Json::Value getFromEventMetadata(const std::string& key) const;
    /// Sets the member `key` of the data. A value with which the data would nest deeper than `kMaxNesting` is logged as
    /// a warning and not added: the member stays as it was. `addJson` is the same.
    void addToJsonEventMetadata(const std::string& key, Json::Value&& value);
    /// "utl_logging_pathway", if it is a string.
    std::optional<std::string> getLoggingPathway() const;
    /// The user id in the member "id": an integer or a text of digits; 0 for anything else.
    int64_t getArvoUserIdFromSorel() const;
    /// Replaces the intake format by the one that the logging pathway stands for, if it stands for one.
    void overrideIntakeFormat();
    /// The identifier of an on-demand event: "odt_" and its campaign; without one "ondemand_statsd_utl", and an error
    /// in the log. Converts the bundle.
    std::string getStringIdentifierODT();
    /// The identifier of a performance-marker event: the number of its marker; without one the event's name, and a line
    /// in the log. Converts the bundle.
    std::string getStringIdentifierKLX();

    /// The value if it is of the type asked for, else the default. Numbers that no signed 64-bit integer holds yield
    /// the default, fractions are truncated.
    std::string validateStr(const Json::Value& value, const std::string& defaultValue) const;
    bool validateBool(const Json::Value& value, bool defaultValue) const;
    long validateInt(const Json::Value& value, long defaultValue) const;

private:
    const Json::Value& data() const;
    Json::Value& data();
    const Json::Value& metadata(std::string_view key, std::optional<Json::Value>& storage) const;
    std::string metadataText(std::string_view key) const;
    bool metadataBool(std::string_view key) const;
    long metadataNumber(std::string_view key, long defaultValue) const;
    const std::string* property(const char* key) const;
    const Json::Value& convertedData();
    friend const Json::Value& jsonValueOf(TelemetryEvent& event, Json::Value& copy);

    android::os::PersistableBundle bundle_;
    Json::Value document_;
    std::map<std::string, std::string> properties_;
    uint32_t uid_;
    bool conversionSucceeded_ = false;
    bool converted_ = false;
    std::optional<std::string> cachedJson_;
    std::optional<std::string> cachedIdentifier_;
    IntakeFormat intakeFormat_;
};

}  // namespace Velo::OS::Telemetry
