#include <benchmark/benchmark.h>

#include "benchmarks/gate/BundleByGetters.h"
#include "benchmarks/gate/Cases.h"
#include "benchmarks/gate/PreparedEvents.h"
#include "telemetry/BundleToJson.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

/// The sample's bundles, each of which both ways have turned into the same value.
std::vector<PreparedEvent> checkedEvents() {
    std::vector<PreparedEvent> events = preparedEvents();
    for (PreparedEvent& event : events) {
        Json::Value converted;
        if (!convertBundleToJson(event.bundle, converted) || converted != event.data) {
            throw std::runtime_error("the library converts " + event.name + " to something else");
        }
        if (bundleByGetters(event.bundle) != event.data) {
            throw std::runtime_error("the floor makes something else of " + event.name);
        }
    }
    return events;
}

void bundleToJson(size_t count, size_t /*size*/) {
    std::vector<PreparedEvent> events = checkedEvents();
    for (size_t i = 0; i < count; ++i) {
        Json::Value json;
        benchmark::DoNotOptimize(convertBundleToJson(events[i % events.size()].bundle, json));
    }
}

void floorOfConversion(size_t count, size_t /*size*/) {
    std::vector<PreparedEvent> events = checkedEvents();
    for (size_t i = 0; i < count; ++i) benchmark::DoNotOptimize(bundleByGetters(events[i % events.size()].bundle));
}

}  // namespace

std::vector<Case> conversionCases() {
    return {{"conversion/bundle to JSON", bundleToJson}, {"conversion/floor", floorOfConversion}};
}

}  // namespace Velo::OS::Telemetry::benchmarks
