#include <gtest/gtest.h>

#include <cstring>

#include "telemetry/AccountCheckpointGuard.h"
#include "telemetry/AdjustedClock.h"
#include "telemetry/AppOverrideManager.h"
#include "telemetry/ApplicationInfoApplier.h"
#include "telemetry/DeviceIDApplier.h"
#include "telemetry/DeviceInfoApplier.h"
#include "telemetry/DeviceSettingApplier.h"
#include "telemetry/DynamicTelemetryGuard.h"
#include "telemetry/EventFilterGuard.h"
#include "telemetry/EventSchemaHandler.h"
#include "telemetry/IEventTracingManager.h"
#include "telemetry/IHealthCountersManager.h"
#include "telemetry/IdentityApplier.h"
#include "telemetry/IntakeMonitor.h"
#include "telemetry/KeyValueDispatch.h"
#include "telemetry/OSUtilsDeviceIdApplier.h"
#include "telemetry/PackageInfoApplier.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/RateLimiterGuard.h"
#include "telemetry/SequenceNumberApplier.h"
#include "telemetry/SessionsApplier.h"
#include "telemetry/SizeLimiterMonitor.h"
#include "telemetry/SystemPropertyApplier.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"
#include "telemetry/TelemetryStateGuard.h"
#include "telemetry/TimestampApplier.h"
#include "telemetry/VerificationMonitor.h"
#include "tests/fakes/FakeGuardServices.h"
#include "tests/fakes/FakeStorageCache.h"
#include "tests/fakes/FakeTelemetrySettings.h"

// Services were compiled against these positions and sizes.

namespace Velo::OS::Telemetry {

/// Positions in the tables of virtual operations, counted from 1, destructors included. In the Itanium C++ ABI a
/// pointer to a virtual member function holds the slot's offset in bytes, plus 1 where functions are byte-aligned.
template <typename... Operation>
std::vector<size_t> entries(Operation... operations) {
    const auto entry = [](auto operation) {
        size_t word = 0;
        std::memcpy(&word, &operation, sizeof word);
        return word / sizeof(void*) + 1;
    };
    return {entry(operations)...};
}

using Entries = std::vector<size_t>;

TEST(InterfaceSlots, OperationsStandWhereTheyAreCalled) {
    EXPECT_EQ(entries(&IEventTracingManager::traceEventStage), Entries{8});
    EXPECT_EQ(entries(&IHealthCountersManager::incrementCounter, &IHealthCountersManager::incrementEventCounter),
              (Entries{4, 5}));
    using S = ITelemetrySettingsManager;
    EXPECT_EQ(entries(&S::isTelemetryEnabled, &S::getTelemetryDeviceId, &S::getMorlekDeviceId, &S::getManagedMode,
                      &S::getAccountMode, &S::isVerboseEnabled, &S::isClockAdjusted, &S::setClockAdjusted,
                      &S::isEventCacheTimeAdjusted, &S::setEventCacheTimeAdjusted, &S::getClockAdjustmentMs,
                      &S::setClockAdjustmentMs, &S::isGkEnabled, &S::isEventInVerification),
              (Entries{4, 5, 6, 7, 8, 11, 16, 17, 18, 19, 20, 21, 24, 30}));
    EXPECT_EQ(entries(&IApplier::apply, &IGuard::handle, &IMonitor::monitor), (Entries{3, 3, 3}));
    EXPECT_EQ(entries(&IIdentityManager::getUserIdForUid), Entries{3});
    EXPECT_EQ(entries(&IPackageInfoManager::getPackageInfo, &IPackageInfoManager::getForegroundPackageInfo),
              (Entries{3, 7}));
    using N = SequenceNumberManager;
    EXPECT_EQ(entries(&N::getNextGlobalSequenceNumber, &N::getNextPerTypeSequenceNumber), (Entries{3, 4}));
    EXPECT_EQ(entries(&ISessionManager::getSessions, &ISessionManager::shouldAttachSessionsToAllEvents,
                      &ISessionManager::getSessionsV2),
              (Entries{5, 12, 14}));
    using O = IAppOverrideManager;
    EXPECT_EQ(entries(&O::setAppOverrideStr, &O::setAppOverrideInt, &O::getAllOverrides, &O::getOverrideForKey),
              (Entries{3, 4, 5, 6}));
    using C = IStorageCache;
    EXPECT_EQ(entries(&C::getValue, &C::setValue, &C::removeValue, &C::listKeys), (Entries{3, 4, 5, 6}));
    using A = AdjustedClock;
    EXPECT_EQ(entries(&A::getTimestamp, &A::getAdjustmentInMs, &A::adjustClock, &A::resetIsAdjusted, &A::getSettings),
              (Entries{3, 4, 5, 6, 7}));
    using D = DeviceIDApplier;
    EXPECT_EQ(entries(&D::apply, &D::getTelemetryDeviceId, &D::getMorlekDeviceId, &D::getSettings),
              (Entries{3, 4, 5, 6}));
    EXPECT_EQ(entries(&DeviceSettingApplier::apply, &DeviceSettingApplier::getSettings), (Entries{3, 4}));

    EXPECT_EQ(entries(&IRateLimiterConfigManager::getRateLimitConfig), Entries{3});
    EXPECT_EQ(entries(&IAccountCheckpointManager::isAccountCheckpointed), Entries{1});
    using T = IDynamicTelemetryManager;
    EXPECT_EQ(entries(&T::evaluateEvent, &T::getActiveConfigId, &T::takePerformanceLogs, &T::takeConfigFetchLogs),
              (Entries{4, 9, 12, 13}));
    using F = IEventFilteringManager;
    EXPECT_EQ(entries(&F::isFilterEnabled, &F::hasUserConsent, &F::getDiscretionaryAppBypass, &F::isEventAllowed,
                      &F::isEventAllowedIfFilterEnabled, &F::getEventSchemaHandler, &F::getUserAccountState),
              (Entries{3, 4, 5, 10, 11, 16, 17}));
    EXPECT_EQ(entries(&IDiscretionaryAppBypass::isBypassedForDiscretionaryApp), Entries{3});
    EXPECT_EQ(entries(&IUserAccountState::isParviAccount, &IUserAccountState::hasDataUseConsent), (Entries{2, 3}));
    using H = IEventSchemaHandler;
    EXPECT_EQ(
        entries(&H::persistEventSchema, &H::getEventCategory, &H::overrideEventCategory, &H::isEventSchemaAvailable,
                &H::getEventSchemaTimestamp, &H::isPersonalizationPurposeOnly, &H::isAdsPersonalizationPurposeOnly),
        (Entries{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(entries(&PathwayGuard::isEventInVerification, &TelemetryStateGuard::getSettings), (Entries{4, 4}));
    EXPECT_EQ(entries(&IntakeMonitor::isGkEnabled, &VerificationMonitor::isEventInVerification,
                      &VerificationMonitor::isVerboseEnabled),
              (Entries{4, 4, 5}));

    using E = TelemetryEvent;
    const Entries event =
        entries(&E::getJsonValue, &E::getJsonString, &E::getDebugString, &E::getJsonBatchHeaderString, &E::size,
                &E::name, &E::sessionsV2, &E::uid, &E::priority, &E::time, &E::clientCreatedTime, &E::adjustedTime,
                &E::loggingPackage, &E::deviceId, &E::osBuildNumber, &E::appId, &E::appVersion, &E::arvoUserId,
                &E::tags, &E::consentState, &E::addBool, &E::addInt, &E::addUInt, &E::addLong, &E::addULong,
                &E::addDouble, static_cast<void (E::*)(const std::string&, const std::string&)>(&E::addString),
                static_cast<void (E::*)(const std::string&, const char*)>(&E::addString), &E::addStringVector,
                &E::addJson, &E::addProperty, &E::setSampleRate, &E::setUid, &E::sampleRateAsPelko, &E::getIntakeFormat,
                &E::getStringIdentifier);
    ASSERT_EQ(event.size(), 36U);
    for (size_t i = 0; i < event.size(); ++i) EXPECT_EQ(event[i], i + 3) << "operation " << i + 1;
}

struct EventLayout {
    void* table;
    android::os::PersistableBundle bundle;
    Json::Value document;
    std::map<std::string, std::string> properties;
    uint32_t uid;
    bool conversionSucceeded, converted;
    std::optional<std::string> cachedJson, cachedIdentifier;
    IntakeFormat format;
};
static_assert(sizeof(TelemetryEventBundle) == sizeof(EventLayout));
static_assert(sizeof(TelemetryEventProcessor) == 3 * sizeof(std::vector<int>) + 2 * sizeof(std::shared_ptr<int>));
static_assert(sizeof(TelemetryEventProcessorBuilder) == sizeof(std::shared_ptr<int>));
static_assert(sizeof(IApplier) == sizeof(void*) + sizeof(std::string));
static_assert(sizeof(IGuard) == sizeof(IApplier) + sizeof(MonitorEventCallback) && sizeof(IMonitor) == sizeof(IGuard));

static_assert(sizeof(AdjustedTimestamp) == 24 && offsetof(AdjustedTimestamp, isAdjusted) == 0 &&
              offsetof(AdjustedTimestamp, timestampMs) == 8 && offsetof(AdjustedTimestamp, bootTimeMs) == 16);
static_assert(sizeof(AdjustedClock) == 24);
static_assert(sizeof(PackageInfo) == 2 * sizeof(std::string) + 8 && offsetof(PackageInfo, packageName) == 0 &&
              offsetof(PackageInfo, versionCode) == sizeof(std::string) &&
              offsetof(PackageInfo, versionName) == sizeof(std::string) + 8);
static_assert(sizeof(KeyValueDispatch) == sizeof(std::shared_ptr<int>) + sizeof(std::string) + 8);
static_assert(sizeof(AppOverrideManager) == sizeof(void*) + 2 * sizeof(std::map<int, int>));
template <typename Applier, typename... Members>
constexpr bool kHolds = sizeof(Applier) == sizeof(IApplier) + (0 + ... + sizeof(Members));
using Shared = std::shared_ptr<int>;
static_assert(kHolds<DeviceIDApplier> && kHolds<OSUtilsDeviceIdApplier> && kHolds<DeviceSettingApplier> &&
              kHolds<SystemPropertyApplier> && kHolds<DeviceInfoApplier, void*, void*, void*, void*> &&
              kHolds<IdentityApplier, Shared, Shared> && kHolds<PackageInfoApplier, Shared, Shared> &&
              kHolds<ApplicationInfoApplier, void*, Shared> && kHolds<SequenceNumberApplier, Shared> &&
              kHolds<SessionsApplier, Shared> && kHolds<TimestampApplier, Shared>);

template <typename Guard, typename... Members>
constexpr bool kGuardHolds = sizeof(Guard) == sizeof(IGuard) + (0 + ... + sizeof(Members));
static_assert(kGuardHolds<PathwayGuard, Shared> && kGuardHolds<TelemetryStateGuard> &&
              kGuardHolds<RateLimiterGuard, Shared, Shared, std::mutex> &&
              kGuardHolds<DynamicTelemetryGuard, Shared, Shared, std::mutex> &&
              kGuardHolds<AccountCheckpointGuard, Shared, Shared, std::mutex> &&
              kGuardHolds<EventFilterGuard, Shared, Shared, std::mutex>);
static_assert(kGuardHolds<IntakeMonitor, std::mutex> && kGuardHolds<SizeLimiterMonitor> &&
              kGuardHolds<VerificationMonitor>);
static_assert(sizeof(IEventSchemaHandler::EventCategory) == 4 &&
              sizeof(EventSchemaHandler) ==
                  sizeof(void*) + 2 * sizeof(KeyValueDispatch) + 3 * sizeof(std::unordered_map<int, int>) +
                      sizeof(std::optional<std::string>) + sizeof(std::optional<uint64_t>) + sizeof(std::mutex));
static_assert(sizeof(RateLimitConfig) == 24 && offsetof(RateLimitConfig, refillCount) == 0 &&
              offsetof(RateLimitConfig, maxEvents) == 8 && offsetof(RateLimitConfig, windowSeconds) == 16);
static_assert(sizeof(DynamicTelemetryDecision) == 8 && offsetof(DynamicTelemetryDecision, shouldLog) == 0 &&
              offsetof(DynamicTelemetryDecision, sampleRate) == 4);
using GuardLog = IDynamicTelemetryPerformance::GuardPerformanceLog;
using MonitorLog = IDynamicTelemetryPerformance::MonitorLog;
static_assert(sizeof(GuardLog) == 96 && offsetof(GuardLog, metrics) == 0 && offsetof(GuardLog, configId) == 56 &&
              offsetof(GuardLog, loggingDurationMs) == 88);
static_assert(sizeof(MonitorLog) == 128 && offsetof(MonitorLog, configId) == 0 &&
              offsetof(MonitorLog, processedEventName) == 32 && offsetof(MonitorLog, metrics) == 64 &&
              offsetof(MonitorLog, loggingDurationMs) == 120);
static_assert(sizeof(FetchOutcome) == 4 && sizeof(ConfigFetchLog) == 88 &&
              offsetof(ConfigFetchLog, activeConfigId) == 0 && offsetof(ConfigFetchLog, fetchedConfigId) == 32 &&
              offsetof(ConfigFetchLog, fetchFinished) == 72 && offsetof(ConfigFetchLog, outcome) == 80);
static_assert(sizeof(PerformanceLogs) == 48 && offsetof(PerformanceLogs, guardLogs) == 0 &&
              offsetof(PerformanceLogs, monitorLogs) == 24);

template <typename T>
T valueAt(const void* object, ptrdiff_t offset) {
    T value{};
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
    return value;
}

TEST(InterfaceSlots, MembersStandInOrder) {
    const TelemetryEventBundle event("e", Json::Value(), 0x12345678U, IntakeFormat::HalAtom);
    const EventLayout layout{};
    const auto offsetOf = [&](const void* member) {
        return static_cast<const char*>(member) - reinterpret_cast<const char*>(&layout);
    };
    EXPECT_EQ(valueAt<uint32_t>(&event, offsetOf(&layout.uid)), 0x12345678U);
    EXPECT_EQ(valueAt<IntakeFormat>(&event, offsetOf(&layout.format)), IntakeFormat::HalAtom);

    EXPECT_EQ(valueAt<Store>(std::make_unique<KeyValueDispatch>(Store::EventSchema, "", nullptr).get(), 48),
              Store::EventSchema);
    fakes::FakeTelemetrySettings::install()->clockAdjusted = true;
    const AdjustedClock clock;
    EXPECT_TRUE(valueAt<bool>(&clock, 8));
    EXPECT_EQ(valueAt<int64_t>(&clock, 16), 0);

    const auto services = std::make_shared<fakes::FakeGuardServices>();
    const RateLimiterGuard rateLimiter(nullptr, services, services);
    const DynamicTelemetryGuard dynamicTelemetry(nullptr, services, services);
    const AccountCheckpointGuard checkpoint(nullptr, services, services);
    const EventFilterGuard filter(nullptr, services, services);
    const IHealthCountersManager* const counters = services.get();
    constexpr size_t kFirst = sizeof(IGuard), kSecond = kFirst + sizeof(Shared);
    EXPECT_EQ(valueAt<IHealthCountersManager*>(&rateLimiter, kFirst), counters);
    EXPECT_EQ(valueAt<IHealthCountersManager*>(&dynamicTelemetry, kSecond), counters);
    EXPECT_EQ(valueAt<IHealthCountersManager*>(&checkpoint, kSecond), counters);
    EXPECT_EQ(valueAt<IHealthCountersManager*>(&filter, kSecond), counters);
    EXPECT_EQ(reinterpret_cast<const char*>(&checkpoint.name_), reinterpret_cast<const char*>(&checkpoint) + 8);
    const SizeLimiterMonitor monitor(nullptr);
    EXPECT_EQ(reinterpret_cast<const char*>(&monitor.name_), reinterpret_cast<const char*>(&monitor) + 8);

    const auto cache = std::make_shared<fakes::FakeStorageCache>();
    cache->values[{Store::EventSchema, "event_schema", "timestamp"}] = "1790000000000";
    EventSchemaHandler schema(cache);
    EXPECT_EQ(schema.getEventSchemaTimestamp(), 1'790'000'000'000U);
    constexpr size_t kSalt = sizeof(void*) + 2 * sizeof(KeyValueDispatch) + sizeof(std::unordered_map<int, int>);
    EXPECT_EQ(valueAt<uint64_t>(&schema, kSalt + sizeof(std::optional<std::string>)), 1'790'000'000'000U);

    static_assert(sizeof(EventResult) == 24);
    EventResult result;
    EXPECT_EQ(valueAt<uint8_t>(&result, 16), 0);
    result = EventResult(std::make_unique<TelemetryEventBundle>("e", 1000U, false));
    EXPECT_EQ(valueAt<uint8_t>(&result, 16), 1);
    result = std::error_code(22, std::generic_category());
    EXPECT_EQ(valueAt<uint8_t>(&result, 16), 2);
}

}  // namespace Velo::OS::Telemetry
