#include <gtest/gtest.h>

#include <cstring>

#include "telemetry/AdjustedClock.h"
#include "telemetry/DeviceIDApplier.h"
#include "telemetry/DeviceSettingApplier.h"
#include "telemetry/IAccountCheckpointManager.h"
#include "telemetry/IAppOverrideManager.h"
#include "telemetry/IApplier.h"
#include "telemetry/IDiscretionaryAppBypass.h"
#include "telemetry/IDynamicTelemetryManager.h"
#include "telemetry/IDynamicTelemetryPerformance.h"
#include "telemetry/IEventFilteringManager.h"
#include "telemetry/IEventSchemaHandler.h"
#include "telemetry/IEventTracingManager.h"
#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"
#include "telemetry/IIdentityManager.h"
#include "telemetry/IMonitor.h"
#include "telemetry/IPackageInfoManager.h"
#include "telemetry/IRateLimiterConfigManager.h"
#include "telemetry/ISessionManager.h"
#include "telemetry/IStorageCache.h"
#include "telemetry/ITelemetrySettingsManager.h"
#include "telemetry/IUserAccountState.h"
#include "telemetry/IntakeMonitor.h"
#include "telemetry/PathwayGuard.h"
#include "telemetry/SequenceNumberManager.h"
#include "telemetry/TelemetryEvent.h"
#include "telemetry/TelemetryStateGuard.h"
#include "telemetry/VerificationMonitor.h"

// Services were compiled against these positions, and these layouts of what they hand over.

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

static_assert(sizeof(AdjustedTimestamp) == 24 && offsetof(AdjustedTimestamp, isAdjusted) == 0 &&
              offsetof(AdjustedTimestamp, timestampMs) == 8 && offsetof(AdjustedTimestamp, bootTimeMs) == 16);
static_assert(sizeof(PackageInfo) == 2 * sizeof(std::string) + 8 && offsetof(PackageInfo, packageName) == 0 &&
              offsetof(PackageInfo, versionCode) == sizeof(std::string) &&
              offsetof(PackageInfo, versionName) == sizeof(std::string) + 8);
static_assert(sizeof(IEventSchemaHandler::EventCategory) == 4);
static_assert(sizeof(RateLimitConfig) == 24 && offsetof(RateLimitConfig, refillCount) == 0 &&
              offsetof(RateLimitConfig, maxEvents) == 8 && offsetof(RateLimitConfig, windowSeconds) == 16);
static_assert(sizeof(DynamicTelemetryDecision) == 8 && offsetof(DynamicTelemetryDecision, shouldLog) == 0 &&
              offsetof(DynamicTelemetryDecision, sampleRate) == 4);
using GuardLog = IDynamicTelemetryPerformance::GuardPerformanceLog;
using MonitorLog = IDynamicTelemetryPerformance::MonitorLog;
constexpr size_t kText = sizeof(std::string), kMetrics = sizeof(std::unordered_map<std::string, int64_t>);
static_assert(sizeof(GuardLog) == kMetrics + kText + 8 && offsetof(GuardLog, metrics) == 0 &&
              offsetof(GuardLog, configId) == kMetrics && offsetof(GuardLog, loggingDurationMs) == kMetrics + kText);
static_assert(sizeof(MonitorLog) == 2 * kText + kMetrics + 8 && offsetof(MonitorLog, configId) == 0 &&
              offsetof(MonitorLog, processedEventName) == kText && offsetof(MonitorLog, metrics) == 2 * kText &&
              offsetof(MonitorLog, loggingDurationMs) == 2 * kText + kMetrics);
static_assert(sizeof(FetchOutcome) == 4 && offsetof(ConfigFetchLog, activeConfigId) == 0 &&
              offsetof(ConfigFetchLog, fetchedConfigId) == kText &&
              offsetof(ConfigFetchLog, fetchFinished) == kText + sizeof(std::optional<std::string>) &&
              offsetof(ConfigFetchLog, outcome) == offsetof(ConfigFetchLog, fetchFinished) + 8 &&
              sizeof(ConfigFetchLog) == offsetof(ConfigFetchLog, outcome) + 8);
static_assert(sizeof(PerformanceLogs) == 48 && offsetof(PerformanceLogs, guardLogs) == 0 &&
              offsetof(PerformanceLogs, monitorLogs) == 24);

}  // namespace Velo::OS::Telemetry
