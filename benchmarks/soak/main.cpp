// Usage: telemetry_soak [EVENTS [NAMES]]: processes that many events through all stages and fails if memory grows once
// every name is known. `telemetry_soak tables`: what a name takes in each table.

#include <android/log.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include "benchmarks/soak/MixedEvents.h"
#include "telemetry/MonitorEventCache.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

constexpr size_t kMegabyte = 1'000'000;

size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

size_t residentSize() {
    size_t total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

/// Prints what the heap holds each million events. False if it grew by more than 1 % after all names were known.
bool soak(size_t events, size_t names) {
    const MixedPipeline pipeline(names);
    const size_t known = std::max<size_t>(2'000'000, 2 * kKinds * names);
    size_t settled = 0, last = 0;
    std::puts("    events   heap in use, MB    resident, MB");
    for (size_t i = 1; i <= events; ++i) {
        EventResult result = pipeline.processor->processEvent(mixedEvent(i - 1, names));
        if (result.hasValue()) result.takeValue()->getDebugString();
        if (i % 1'000'000 != 0) continue;
        last = heapInUse();
        if (i <= known) settled = last;
        std::printf("%10zu %17.3f %15.3f\n", i, static_cast<double>(last) / kMegabyte,
                    static_cast<double>(residentSize()) / kMegabyte);
        std::fflush(stdout);
    }
    if (settled == 0 || last <= settled + settled / 100) return true;
    std::fprintf(stderr, "The heap grew by %zu bytes after all names were known\n", last - settled);
    return false;
}

/// Prints how many bytes of the heap each of many names takes after `use` has seen it.
template <typename Use>
void measure(const char* table, Use use) {
    constexpr size_t kNames = 100'000;
    const size_t before = heapInUse();
    for (size_t i = 0; i < kNames; ++i) use("arvo_event_" + std::to_string(1'000'000 + i));
    std::printf("%-40s %6.0f\n", table, static_cast<double>(heapInUse() - before) / kNames);
}

void measureTables() {
    const auto event = [](const std::string& name, uint32_t uid) {
        return std::make_unique<TelemetryEventBundle>(name, Json::Value(), uid, IntakeFormat::JsonBundle);
    };
    replay::Device device;
    device.intakeGate = true;
    host::setTelemetrySettings(std::make_shared<replay::DeviceServices>(device));
    RateLimiterGuard limiter(nullptr, std::make_shared<NoCounters>(), std::make_shared<NoLimit>());
    IntakeMonitor monitor([](const auto&...) {});
    EventSchemaHandler schema(std::make_shared<MemoryStorage>());

    std::puts("Bytes of heap for each name of 18 letters, the name included:");
    measure("rate limiter", [&](const std::string& name) { limiter.handle(event(name, kUid)).takeValue(); });
    measure("intake monitor", [&](const std::string& name) { monitor.monitor(event(name, kUid)); });
    for (const uint32_t uid : {kUid, kCheckpointedUid}) {
        measure(uid == kUid ? "decisions of the filter, first user" : "decisions of the filter, one more user",
                [&](const std::string& name) { MonitorEventCache::checkAndSetFilterDecisionCache(uid, name, true); });
    }
    measure("schema: categories", [&](const std::string& name) { schema.getEventCategory(name); });
    measure("schema: personalization", [&](const std::string& name) { schema.isPersonalizationPurposeOnly(name); });
    measure("schema: ads personalization", [&](const auto& name) { schema.isAdsPersonalizationPurposeOnly(name); });
}

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks

int main(int count, char** arguments) {
    using namespace Velo::OS::Telemetry::benchmarks;
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    if (count > 1 && std::string_view(arguments[1]) == "tables") {
        measureTables();
        return EXIT_SUCCESS;
    }
    const size_t events = count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 10'000'000;
    const size_t names = count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 100'000;
    return soak(events, names) ? EXIT_SUCCESS : EXIT_FAILURE;
}
