#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "benchmarks/SamplePipeline.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::benchmarks {

constexpr size_t kKinds = 8;
constexpr uint32_t kUid = 10001, kCheckpointedUid = 10002;

/// Events of eight kinds take turns: kept, rate-limited, filtered, not sampled, of a checkpointed account, of a refused
/// pathway, in verification, and (a few of the last kind) large. Those that are kept take turns with `names` names.
inline std::unique_ptr<TelemetryEvent> mixedEvent(size_t number, size_t names) {
    static const char* const kNames[kKinds] = {"kept_",  "limited", "filtered", "unsampled",
                                               "kept_0", "kept_0",  "verified", "large"};
    static const Json::Value& large = []() -> auto& {
        auto& data = *new Json::Value;  // for events that statics process from their destructors
        for (int i = 0; i <= 2560; ++i) data[std::to_string(i)] = i;
        return data;
    }
    ();
    const size_t kind = number % kKinds, turn = number / kKinds;
    const std::string name = kNames[kind] + (kind == 0 ? std::to_string(turn % names) : "");
    if (kind == 6) {
        android::os::PersistableBundle bundle;
        bundle.putString(android::String16("text"), android::String16("\u00e9"));
        bundle.putPersistableBundle(android::String16("inner"), bundle);
        return std::make_unique<TelemetryEventBundle>(name, kUid, false, bundle);
    }
    return std::make_unique<TelemetryEventBundle>(name, kind == 7 && turn % 1024 == 0 ? large : Json::Value(),
                                                  kind == 4 ? kCheckpointedUid : kUid,
                                                  kind == 5 ? IntakeFormat::GenericAtom : IntakeFormat::JsonBundle);
}

/// The device on which each kind becomes what it is for.
inline replay::Device mixedDevice() {
    replay::Device device = sampleDevice();
    device.intakeGate = device.filter.enabled = true;
    device.checkpointedUids = {kCheckpointedUid};
    device.eventsInVerification = {"verified"};
    device.dynamicTelemetry.events["unsampled"].keep = false;
    return device;
}

/// A schema that knows every name but "filtered".
inline std::string mixedSchema(EventSchemaHandler& handler, size_t names) {
    handler.persistEventSchema(R"({"salt":"s"})");
    Json::Value schema;
    schema["timestamp"] = 1;
    schema["salt"] = "s";
    schema["settings_to_categories"]["ESSENTIAL"].append(1);
    for (size_t i = 0; i < kKinds * names; ++i) {
        if (i >= kKinds && i % kKinds != 0) continue;  // only kept events have many names
        const std::string name = mixedEvent(i, names)->name();
        if (name == "filtered") continue;
        Json::Value event;
        event["identifier"] = handler.getHashedEventName(name);
        event["categories"].append(1);
        schema["allowed_events"].append(event);
    }
    return schema.toStyledString();
}

using Counts = std::map<std::string, uint64_t>;

/// Counts what it is told and hands out what is asked of it, to many threads at once. Of the events called "limited"
/// it allows `kLimit`.
class Ledger : public IHealthCountersManager, public SequenceNumberManager, public IRateLimiterConfigManager {
public:
    static constexpr int64_t kLimit = 100;

    void incrementCounter(const std::string& name, int32_t /*amount*/) override { next(counters, name); }
    void incrementEventCounter(const std::string& name, const TelemetryEvent& /*event*/, int32_t /*amount*/) override {
        next(counters, name);
    }
    uint64_t getNextGlobalSequenceNumber(bool /*priority*/) override { return next(numbers, ""); }
    uint64_t getNextPerTypeSequenceNumber(const std::string& name) override { return next(numbers, name); }
    RateLimitConfig getRateLimitConfig(const std::string& name) override {
        return {1, name == "limited" ? kLimit : 1LL << 62, 1'000'000};
    }
    void report(const android::os::PersistableBundle& envelope) {
        for (const auto& key : envelope.getPersistableBundleKeys()) next(reports, android::String8(key).c_str());
    }

    Counts counters, reports, numbers;  // numbers: the last one of each name; the last global one under no name

private:
    uint64_t next(Counts& counts, const std::string& name) {
        const std::lock_guard<std::mutex> lock(mutex_);
        return ++counts[name];
    }

    std::mutex mutex_;
};

/// All stages, with a ledger for all that they count, report and number.
struct MixedPipeline {
    explicit MixedPipeline(size_t names) : schema(mixedSchema(*services.schema, names)) {
        services.schema->persistEventSchema(schema);
    }

    const std::shared_ptr<Ledger> ledger = std::make_shared<Ledger>();
    const PipelineServices services{.counters = ledger, .numbers = ledger, .limits = ledger};
    const std::string schema;
    const std::shared_ptr<TelemetryEventProcessor> processor =
        makePipelineWith(services, mixedDevice(),
                         [own = ledger](const auto& envelope, bool /*flag*/, auto /*uid*/) { own->report(envelope); });
};

}  // namespace Velo::OS::Telemetry::benchmarks
