#include "benchmarks/Allocations.h"
#include "benchmarks/SampleEvent.h"
#include "telemetry/BundleToJson.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

using android::String16;
using android::os::PersistableBundle;

PersistableBundle sampleBundle() {
    PersistableBundle extra;
    extra.putInt(String16("k1"), 17);
    extra.putString(String16("k2"), String16("omega"));
    PersistableBundle bundle;
    bundle.putPersistableBundle(String16("extra"), extra);
    bundle.putString(String16("build"), String16("v51.3.217"));
    bundle.putInt(String16("flags"), 9437251);
    bundle.putDouble(String16("fps"), 71.98);
    bundle.putBoolean(String16("ok"), true);
    bundle.putLong(String16("utl_realtime_ms"), 8452311);
    bundle.putString(String16("session_id"), String16("0f6d3c1be2a94d57b8e1c0a2f4d69b73"));
    bundle.putStringVector(String16("tags"), {String16("beta"), String16("wifi")});
    return bundle;
}

/// The same value made without a bundle.
void floorOfConversion(benchmark::State& state) {
    const Allocations allocations(state);
    for (auto _ : state) {
        Json::Value json;
        json["ok"] = true;
        json["flags"] = 9437251;
        json["utl_realtime_ms"] = Json::Int64{8452311};
        json["fps"] = 71.98;
        json["build"] = "v51.3.217";
        json["session_id"] = "0f6d3c1be2a94d57b8e1c0a2f4d69b73";
        Json::Value& tags = json["tags"] = Json::Value(Json::arrayValue);
        tags.append("beta");
        tags.append("wifi");
        Json::Value& extra = json["extra"];
        extra["k1"] = 17;
        extra["k2"] = "omega";
        benchmark::DoNotOptimize(json);
    }
}

void bundleToJson(benchmark::State& state) {
    PersistableBundle bundle = sampleBundle();
    const Allocations allocations(state);
    for (auto _ : state) {
        Json::Value json;
        benchmark::DoNotOptimize(convertBundleToJson(bundle, json));
        benchmark::DoNotOptimize(json);
    }
}

BENCHMARK(floorOfConversion)->Name("conversion/floor")->Repetitions(5)->MinTime(0.1);
BENCHMARK(bundleToJson)->Name("conversion/convertBundleToJson")->Repetitions(5)->MinTime(0.1);

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks
