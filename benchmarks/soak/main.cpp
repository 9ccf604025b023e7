// `telemetry_soak [EVENTS [NAMES]]` processes that many events through all stages and fails if memory grows once every
// name is known. `telemetry_soak tables`: what a name takes in each table.

#include <android/log.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <span>
#include <string_view>

#include "benchmarks/soak/MixedEvents.h"
#include "telemetry/MonitorEventCache.h"

namespace Velo::OS::Telemetry::benchmarks {
namespace {

constexpr size_t kMegabyte = 1'000'000;
constexpr size_t kFewestEvents = 4'000'000;
constexpr int kUsageError = 2;

struct Amounts {
    size_t events = 10'000'000;
    size_t names = 100'000;
};

/// After how many events every name is known for sure, and tables have their size.
size_t settlingTime(const Amounts& amounts) { return std::max<size_t>(kFewestEvents / 2, 2 * kKinds * amounts.names); }

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
bool soak(const Amounts& amounts) {
    const auto [events, names] = amounts;
    const MixedPipeline pipeline(names);
    const size_t known = settlingTime(amounts);
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
    if (last <= settled + settled / 100) return true;
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

std::optional<size_t> toNumber(std::string_view text) {
    size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// Nothing if they are no numbers, or too few to tell growth from what settles: that takes half of the events at most.
std::optional<Amounts> toAmounts(std::span<char* const> arguments) {
    Amounts amounts;
    size_t* const members[] = {&amounts.events, &amounts.names};
    if (arguments.size() > std::size(members)) return std::nullopt;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::optional<size_t> number = toNumber(arguments[i]);
        if (!number) return std::nullopt;
        *members[i] = *number;
    }
    const size_t mostNames = amounts.events / (4 * kKinds);
    if (amounts.events < kFewestEvents || amounts.names == 0 || amounts.names > mostNames) return std::nullopt;
    return amounts;
}

int run(std::span<char* const> arguments) {
    if (arguments.size() == 1 && std::string_view(arguments[0]) == "tables") {
        measureTables();
        return EXIT_SUCCESS;
    }
    const std::optional<Amounts> amounts = toAmounts(arguments);
    if (amounts) return soak(*amounts) ? EXIT_SUCCESS : EXIT_FAILURE;
    std::fprintf(stderr,
                 "usage: telemetry_soak [EVENTS [NAMES]] | tables\n"
                 "EVENTS: %zu at least (10000000); NAMES: 1 at least, and at most EVENTS / %zu (100000)\n",
                 kFewestEvents, 4 * kKinds);
    return kUsageError;
}

}  // namespace
}  // namespace Velo::OS::Telemetry::benchmarks

int main(int count, char** arguments) {
    using namespace Velo::OS::Telemetry::benchmarks;
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    return run(std::span<char* const>(arguments, static_cast<size_t>(count)).subspan(1));
}
