#include <benchmark/benchmark.h>

#include <utility>

#include "benchmarks/SampleEvent.h"
#include "benchmarks/SamplePipeline.h"
#include "benchmarks/gate/BundleByGetters.h"
#include "benchmarks/gate/Cases.h"
#include "benchmarks/gate/PreparedEvents.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

constexpr char kId[] = "100004217733019";
constexpr char kVersion[] = "8.41.1-beta2";
constexpr int64_t kVersionCode = 8410102;
constexpr uint64_t kTimeMs = 1'741'845'600'000, kBootTimeMs = 86'400'000;

/// Knows all users and packages of the sample, and its clock stands still.
replay::Device gateDevice() {
    replay::Device device = sampleDevice();
    for (const uint32_t uid : knownUids()) {
        device.identities[uid] = kId;
        for (const std::string& package : loggingPackages()) {
            device.packages[{package, uid}] = {package, kVersionCode, kVersion};
        }
    }
    device.sessions.legacy.clear();
    device.clock = {true, kTimeMs, kBootTimeMs};
    device.intakeGate = true;
    device.filter.enabled = true;
    device.dynamicTelemetry.configs = {{0, "c-2025-03-11"}, {10, "c-2025-03-11"}};
    return device;
}

struct Texts {
    std::string data, header;
    bool operator==(const Texts&) const = default;
};

class Pipeline {
public:
    /// From the event as intake makes it to its texts.
    std::unique_ptr<TelemetryEvent> process(std::unique_ptr<TelemetryEventBundle> event) {
        std::unique_ptr<TelemetryEvent> kept = pipeline_->processEvent(std::move(event)).takeValue();
        benchmark::DoNotOptimize(kept->getJsonString());
        benchmark::DoNotOptimize(kept->getJsonBatchHeaderString());
        return kept;
    }

    size_t reports = 0;

private:
    const std::shared_ptr<TelemetryEventProcessor> pipeline_ =
        makePipeline(gateDevice(), eventNames(), [this](const auto&...) { ++reports; });
};

/// The same texts of the same data with jsoncpp alone.
class Floor {
public:
    Texts make(const PreparedEvent& event, Json::Value&& taken) {
        Json::Value document;
        document["event_name"] = event.name;
        Json::Value& data = document["data"] = std::move(taken);
        const int64_t createdMs = data["utl_realtime_ms"].asInt64();
        data["realtime"] = false;
        data["event_schema_timestamp"] = Json::UInt64{1741759200000};
        data["dynamic_telemetry_config_id"] = "c-2025-03-11";
        data["applied_sample_rate"] = Json::UInt64{1};
        data["device_serial"] = "Unknown";
        data["managed_mode"] = 0;
        data["account_mode"] = -1;
        data["sdk_app_package"] = data["utl_logging_package"];
        data["sdk_app_package_version_name"] = kVersion;
        data["sdk_app_package_version_code"] = Json::Int64{kVersionCode};
        data["fg_app_package_name"] = "com.example.home";
        data["fg_app_package_version"] = "12.3.0";
        data["global_sequence_number"] = Json::UInt64{++number_};
        data["per_type_sequence_number"] = Json::UInt64{++number_};
        data["__sessions_v2"] = "morning:0f6d3c1be2a94d57";
        data["adjusted"] = true;
        data["timestamp"] = Json::UInt64{kTimeMs - (kBootTimeMs - static_cast<uint64_t>(createdMs))};
        benchmark::DoNotOptimize(Json::Value(data));  // the filter asks for a copy

        Json::Value header(Json::objectValue);
        header["morlek_device_id"] = "d41d5c2b-0f67-4f3e-9a35-6c8e1b7a2f90";
        header["id"] = kId;
        header["consent_state"] = "16";
        header["app_id"] = data["utl_app_id"];
        header["app_version"] = data["sdk_app_package_version_name"];
        return {writer_.write(data), writer_.write(header)};
    }

private:
    ReusedWriter writer_;
    uint64_t number_ = 0;
};

/// What both sides have in common: each takes its data out of the sample, as a copy or through the bundle's getters.
struct JsonForm {
    static std::unique_ptr<TelemetryEventBundle> event(const PreparedEvent& sample, uint32_t uid) {
        return std::make_unique<TelemetryEventBundle>(sample.name, sample.data, uid, IntakeFormat::JsonBundle);
    }
    static Json::Value data(PreparedEvent& sample) { return sample.data; }
};

struct BundleForm {
    static std::unique_ptr<TelemetryEventBundle> event(const PreparedEvent& sample, uint32_t uid) {
        return std::make_unique<TelemetryEventBundle>(sample.name, uid, false, sample.bundle);
    }
    static Json::Value data(PreparedEvent& sample) { return bundleByGetters(sample.bundle); }
};

/// Both sides after the whole sample: they have made the same texts of it, and the library has nothing to report.
template <typename Form>
struct Contest {
    Contest() {
        for (PreparedEvent& sample : samples) {
            const auto kept = pipeline.process(Form::event(sample, sample.uid));
            const Texts made = floor.make(sample, Form::data(sample));
            if (made == Texts{kept->getJsonString(), kept->getJsonBatchHeaderString()}) continue;
            throw std::runtime_error("the floor makes other texts than the library:\n" + made.data + made.header +
                                     "\n" + kept->getJsonString() + kept->getJsonBatchHeaderString());
        }
        pipeline.reports = 0;
    }

    std::vector<PreparedEvent> samples = preparedEvents();
    Pipeline pipeline;
    Floor floor;
};

template <typename Form>
void libraryEvents(size_t count, size_t /*size*/) {
    Contest<Form> contest;
    for (size_t i = 0; i < count; ++i) {
        const PreparedEvent& sample = contest.samples[i % contest.samples.size()];
        contest.pipeline.process(Form::event(sample, sample.uid));
    }
    if (contest.pipeline.reports > 0) throw std::runtime_error("there are reports of users who were known");
}

template <typename Form>
void libraryFloor(size_t count, size_t /*size*/) {
    Contest<Form> contest;
    for (size_t i = 0; i < count; ++i) {
        PreparedEvent& sample = contest.samples[i % contest.samples.size()];
        benchmark::DoNotOptimize(contest.floor.make(sample, Form::data(sample)));
    }
}

/// Each event is of a user not seen before: the intake monitor and the filter guard both report it.
void audits(size_t count, size_t /*size*/) {
    Contest<JsonForm> contest;
    for (size_t i = 0; i < count; ++i) {
        const PreparedEvent& sample = contest.samples[i % contest.samples.size()];
        contest.pipeline.process(JsonForm::event(sample, static_cast<uint32_t>(20'000 + i)));
    }
    if (contest.pipeline.reports != 2 * count) throw std::runtime_error("not every new user was reported twice");
}

/// What anyone would have to do for a line: read it, add twenty members, write it.
void plainJob(Users users, size_t count) {
    const std::vector<std::string> lines = makeEventLines(users, 1500);
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    ReusedWriter writer;
    Json::Value root;
    for (size_t i = 0; i < count; ++i) {
        const std::string& line = lines[i % lines.size()];
        if (!reader->parse(line.data(), line.data() + line.size(), &root, nullptr)) throw std::runtime_error(line);
        Json::Value& data = root["data"];
        for (const char* key : {"device_serial", "dynamic_telemetry_config_id", "sdk_app_package",
                                "fg_app_package_name", "sdk_app_package_version_name", "fg_app_package_version",
                                "__sessions_v2", "morlek_device_id", "id", "consent_state"}) {
            data[key] = "com.example.shell";
        }
        for (const char* key : {"global_sequence_number", "per_type_sequence_number", "timestamp",
                                "event_schema_timestamp", "applied_sample_rate", "sdk_app_package_version_code"}) {
            data[key] = Json::UInt64{i};
        }
        for (const char* key : {"managed_mode", "account_mode"}) data[key] = -1;
        for (const char* key : {"realtime", "adjusted"}) data[key] = true;
        benchmark::DoNotOptimize(writer.write(data));
    }
}

void plainJobKnownUsers(size_t count, size_t /*size*/) { plainJob(Users::Known, count); }
void plainJobNewUsers(size_t count, size_t /*size*/) { plainJob(Users::New, count); }

}  // namespace

std::vector<Case> pipelineCases() {
    return {{"plain job/known users", plainJobKnownUsers},
            {"plain job/new users", plainJobNewUsers},
            {"library/json events", libraryEvents<JsonForm>},
            {"library/json floor", libraryFloor<JsonForm>},
            {"library/bundle events", libraryEvents<BundleForm>},
            {"library/bundle floor", libraryFloor<BundleForm>},
            {"report/audit", audits}};
}

}  // namespace Velo::OS::Telemetry::benchmarks
