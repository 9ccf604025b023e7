#include <map>
#include <string>

#include "benchmarks/Allocations.h"
#include "benchmarks/SampleEvent.h"
#include "platform/settings/HostTelemetrySettings.h"
#include "replay/DeviceAppliers.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

constexpr char kName[] = "arvo_connection_established";  // one that carries the legacy session context
constexpr unsigned kUid = 10123;

class CountingNumbers : public SequenceNumberManager {
public:
    uint64_t getNextGlobalSequenceNumber(bool /*priority*/) override { return ++number_; }
    uint64_t getNextPerTypeSequenceNumber(const std::string& /*eventName*/) override { return ++number_; }

private:
    uint64_t number_ = 0;
};

replay::Device sampleDevice() {
    replay::Device device;
    device.morlekId = "d41d5c2b-0f67-4f3e-9a35-6c8e1b7a2f90";
    device.identities[kUid] = "100004217733019";
    device.packages[{"com.example.shell", kUid}] = {"com.example.shell", 8410102, "8.41.1-beta2"};
    device.foreground = {"com.example.home", 0, "12.3.0"};
    device.sessions.contexts[0] = "morning:0f6d3c1be2a94d57";
    device.sessions.legacy[0] = "0f6d3c1be2a94d57";
    return device;
}

/// Makes the event's document and inserts what the appliers insert.
void floorOfAppliers(benchmark::State& state) {
    const Json::Value sample = sampleData();
    const Allocations allocations(state);
    for (auto _ : state) {
        Json::Value document;
        document["event_name"] = kName;
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
        std::map<std::string, std::string> properties;
        properties["morlek_device_id"] = "d41d5c2b-0f67-4f3e-9a35-6c8e1b7a2f90";
        properties["id"] = "100004217733019";
        benchmark::DoNotOptimize(document);
        benchmark::DoNotOptimize(properties);
    }
}

/// The same through an event, the eleven appliers and services that look everything up.
void elevenAppliers(benchmark::State& state) {
    const Json::Value sample = sampleData();
    const auto services = std::make_shared<replay::DeviceServices>(sampleDevice());
    host::setTelemetrySettings(services);
    TelemetryEventProcessorBuilder builder(nullptr, nullptr);
    replay::addAppliers(builder, services, std::make_shared<CountingNumbers>());
    const auto pipeline = std::move(builder).build();
    const Allocations allocations(state);
    for (auto _ : state) {
        auto event = std::make_unique<TelemetryEventBundle>(kName, sample, kUid, IntakeFormat::JsonBundle);
        benchmark::DoNotOptimize(pipeline->processEvent(std::move(event)).takeValue());
    }
}

BENCHMARK(floorOfAppliers)->Name("appliers/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(elevenAppliers)->Name("appliers/all eleven")->Repetitions(5)->MinTime(0.1);

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
