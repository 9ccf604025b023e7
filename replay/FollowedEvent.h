#pragma once

#include <string>
#include <utility>
#include <vector>

#include "replay/Journey.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::replay {

/// An event that tells its journey what stages add to it, and is otherwise like any other.
class FollowedEvent : public TelemetryEventBundle {
public:
    /// Takes over an event to which nothing has been added yet. The journey must outlive it.
    FollowedEvent(TelemetryEventBundle&& event, Journey& journey)
        : TelemetryEventBundle(std::move(event)), journey_(journey) {}

    void addBool(const std::string& key, bool value) override {
        TelemetryEventBundle::addBool(key, value);
        tell(key);
    }
    void addInt(const std::string& key, int value) override {
        TelemetryEventBundle::addInt(key, value);
        tell(key);
    }
    void addUInt(const std::string& key, unsigned int value) override {
        TelemetryEventBundle::addUInt(key, value);
        tell(key);
    }
    void addLong(const std::string& key, long value) override {
        TelemetryEventBundle::addLong(key, value);
        tell(key);
    }
    void addULong(const std::string& key, unsigned long value) override {
        TelemetryEventBundle::addULong(key, value);
        tell(key);
    }
    void addDouble(const std::string& key, double value) override {
        TelemetryEventBundle::addDouble(key, value);
        tell(key);
    }
    void addString(const std::string& key, const std::string& value) override {
        TelemetryEventBundle::addString(key, value);
        tell(key);
    }
    void addString(const std::string& key, const char* value) override {
        TelemetryEventBundle::addString(key, value);
        tell(key);
    }
    void addStringVector(const std::string& key, const std::vector<std::string>& value) override {
        TelemetryEventBundle::addStringVector(key, value);
        tell(key);
    }
    void addJson(const std::string& key, Json::Value&& value) override {
        TelemetryEventBundle::addJson(key, std::move(value));
        tell(key);
    }
    void addProperty(const std::string& key, std::string value) override {
        journey_.set(Journey::Part::Header, key, value);
        TelemetryEventBundle::addProperty(key, std::move(value));
    }
    void setUid(unsigned int uid) override {
        journey_.set(Journey::Part::Event, "uid", uid);
        TelemetryEventBundle::setUid(uid);
    }

private:
    void tell(const std::string& key) { journey_.set(Journey::Part::Data, key, getFromEventMetadata(key)); }

    Journey& journey_;
};

}  // namespace Velo::OS::Telemetry::replay
