#pragma once

#include <json/value.h>

#include <map>
#include <string>

#include "replay/Device.h"
#include "telemetry/IEventTracingManager.h"
#include "telemetry/IHealthCountersManager.h"
#include "telemetry/IRateLimiterConfigManager.h"
#include "telemetry/SequenceNumberManager.h"

namespace Velo::OS::Telemetry::benchmarks {

constexpr char kSampleName[] = "arvo_connection_established";  // of events that carry the legacy session context
constexpr unsigned kSampleUid = 10123;

class CountingNumbers : public SequenceNumberManager {
public:
    uint64_t getNextGlobalSequenceNumber(bool /*priority*/) override { return ++number_; }
    uint64_t getNextPerTypeSequenceNumber(const std::string& /*eventName*/) override { return ++number_; }

private:
    uint64_t number_ = 0;
};

class NoCounters : public IHealthCountersManager {
public:
    void incrementCounter(const std::string& /*counterName*/, int32_t /*amount*/) override {}
    void incrementEventCounter(const std::string& /*counterName*/, const TelemetryEvent& /*event*/,
                               int32_t /*amount*/) override {}
};

class NoTracing : public IEventTracingManager {
public:
    void traceEventStage(const std::string& /*eventIdentifier*/, uint32_t /*uid*/,
                         const std::string& /*stageName*/) override {}
};

/// No event is too many, and no window ends however slow the machine is.
class NoLimit : public IRateLimiterConfigManager {
public:
    RateLimitConfig getRateLimitConfig(const std::string& /*eventIdentifier*/) override {
        return {1, 1LL << 62, 1'000'000};
    }
};

inline replay::Device sampleDevice() {
    replay::Device device;
    device.morlekId = "d41d5c2b-0f67-4f3e-9a35-6c8e1b7a2f90";
    device.identities[kSampleUid] = "100004217733019";
    device.packages[{"com.example.shell", kSampleUid}] = {"com.example.shell", 8410102, "8.41.1-beta2"};
    device.foreground = {"com.example.home", 0, "12.3.0"};
    device.sessions.contexts[0] = "morning:0f6d3c1be2a94d57";
    device.sessions.legacy[0] = "0f6d3c1be2a94d57";
    return device;
}

/// The document of an event with this data, and what the appliers add to it on that device.
inline Json::Value appliedDocument(const Json::Value& sample, std::map<std::string, std::string>& properties) {
    Json::Value document;
    document["event_name"] = kSampleName;
    Json::Value& data = document["data"] = sample;
    data["realtime"] = false;
    data["device_serial"] = "Unknown";
    data["managed_mode"] = 0;
    data["account_mode"] = -1;
    data["sdk_app_package"] = "com.example.shell";
    data["sdk_app_package_version_name"] = "8.41.1-beta2";
    data["sdk_app_package_version_code"] = Json::Int64{8410102};
    data["fg_app_package_name"] = "com.example.home";
    data["fg_app_package_version"] = "12.3.0";
    data["global_sequence_number"] = Json::UInt64{1};
    data["per_type_sequence_number"] = Json::UInt64{2};
    data["__sessions_v2"] = "morning:0f6d3c1be2a94d57";
    data["__sessions"] = "0f6d3c1be2a94d57";
    data["adjusted"] = false;
    data["timestamp"] = Json::UInt64{8452311};
    properties["morlek_device_id"] = "d41d5c2b-0f67-4f3e-9a35-6c8e1b7a2f90";
    properties["id"] = "100004217733019";
    return document;
}

}  // namespace Velo::OS::Telemetry::benchmarks
