#pragma once

#include <string>

namespace Velo::OS::Telemetry {

// Names that the service and this library share: health counters and the labels of trace slices. Most counters are
// bumped by the service alone.

/// A stage's counter is this prefix followed by the stage's name.
const std::string kProcessorPrefix = "processor_";

const std::string kServiceReportEventsCalled = "service_report_events_called";
const std::string kServiceEventCapturedRegular = "service_event_captured_regular";
const std::string kServiceEventCapturedExposure = "service_event_captured_exposure";
const std::string kServiceEventPermissionDroppedRegular = "service_event_permission_dropped_regular";
const std::string kServiceEventPermissionDroppedExposure = "service_event_permission_dropped_exposure";
const std::string kServiceShutdownCount = "service_shutdown_count";
const std::string kServiceShutdownPendingEventCounter = "service_shutdown_pending_event_counter";
const std::string kServiceShutdownSavedEventCounter = "service_shutdown_saved_event_counter";
const std::string kServiceShutdownPublishSavedEventCounter = "service_shutdown_publish_saved_event_counter";
const std::string kIntakeReportEventsCalled = "intake_report_events_called";
const std::string kIntakeLogExposureCalled = "intake_log_exposure_called";
const std::string kIntakeEventCapturedRegular = "intake_event_captured_regular";
const std::string kIntakeEventCapturedAtom = "intake_event_captured_atom";
const std::string kIntakeEventCapturedExposure = "intake_event_captured_exposure";
const std::string kIntakeEventCapturedInternal = "intake_event_captured_internal";
const std::string kIntakeEventCapturedOnDemand = "intake_event_captured_on_demand";
const std::string kIntakePendingQueueSize100000 = "intake_pending_queue_size_100000";
const std::string kIntakePendingQueueSize10000 = "intake_pending_queue_size_10000";
const std::string kIntakePendingQueueSize1000 = "intake_pending_queue_size_1000";
const std::string kIntakeLogProcessedEventCalled = "intake_log_processed_event_called";
const std::string kIntakeEventBundleConversionDropped = "intake_event_bundle_conversion_dropped";
const std::string kIntakeEventNoClientTimestamp = "intake_event_no_client_timestamp";
const std::string kIntakeEventTranslationFailureDropped = "intake_event_translation_failure_dropped";
const std::string kSessionsNotificationIntakeDon = "sessions_notification_intake_don";
const std::string kSessionsNotificationIntakeDoff = "sessions_notification_intake_doff";
const std::string kSessionsNotificationSessionkessaDon = "sessions_notification_sessionkessa_don";
const std::string kSessionsNotificationSessionkessaDoff = "sessions_notification_sessionkessa_doff";
const std::string kSessionsNotificationKessaStateUnchangedDon = "sessions_notification_kessa_state_unchanged_don";
const std::string kSessionsNotificationKessaStateUnchangedDoff = "sessions_notification_kessa_state_unchanged_doff";
const std::string kSessionsNotificationUsageStateUnchangedDon = "sessions_notification_usage_state_unchanged_don";
const std::string kSessionsNotificationUsageStateUnchangedDoff = "sessions_notification_usage_state_unchanged_doff";
const std::string kSessionsNotificationReportedDon = "sessions_notification_reported_don";
const std::string kSessionsNotificationReportedDoff = "sessions_notification_reported_doff";
const std::string kSessionsInvalidSerialNumber = "sessions_invalid_serial_number";
const std::string kSessionsFailedUpdateCacheMap = "sessions_failed_update_cache_map";
const std::string kSessionsNewCanonicalStateNotApplied = "sessions_new_canonical_state_not_applied";
const std::string kSessionsTimeSpentUpdatedToPastTime = "sessions_time_spent_updated_to_past_time";
const std::string kSessionsStaleDonState = "sessions_stale_don_state";
const std::string kSchemaFetchStarted = "schema_fetch_started";
const std::string kSchemaFetchSucceeded = "schema_fetch_succeeded";
const std::string kSchemaFetchFailed = "schema_fetch_failed";
const std::string kSchemaPersistFailed = "schema_persist_failed";
const std::string kEventDroppedTrimNeedsReview = "event_dropped_trim_needs_review";
const std::string kEventDroppedTrimNotClassified = "event_dropped_trim_not_classified";
const std::string kGuardAccountCheckpointedDropped = "guard_account_checkpointed_dropped";
const std::string kGuardDynamicTelemetryDropped = "guard_dynamic_telemetry_dropped";
const std::string kGuardRateLimitDropped = "guard_rate_limit_dropped";
const std::string kGuardFilterDropped = "guard_filter_dropped";
const std::string kGuardPathwayDropped = "guard_pathway_dropped";
const std::string kEventJsonConversionDropped = "event_json_conversion_dropped";
const std::string kOndemandEnabled = "ondemand_enabled";
const std::string kOndemandDisabled = "ondemand_disabled";
const std::string kOndemandConfigFetchStarted = "ondemand_config_fetch_started";
const std::string kOndemandConfigFetchFailed = "ondemand_config_fetch_failed";
const std::string kOndemandConfigFetchSucceeded = "ondemand_config_fetch_succeeded";
const std::string kOndemandConfigPersistFailed = "ondemand_config_persist_failed";
const std::string kOndemandConfigPersistSucceeded = "ondemand_config_persist_succeeded";
const std::string kOndemandConfigInstallFailed = "ondemand_config_install_failed";
const std::string kOndemandConfigInstallSucceeded = "ondemand_config_install_succeeded";
const std::string kOndemandStatsDown = "ondemand_stats_down";
const std::string kOndemandStatsInstallFailed = "ondemand_stats_install_failed";
const std::string kOndemandStatsInstallSucceeded = "ondemand_stats_install_succeeded";
const std::string kOndemandStatsUninstallFailed = "ondemand_stats_uninstall_failed";
const std::string kOndemandStatsUninstallSucceeded = "ondemand_stats_uninstall_succeeded";
const std::string kOndemandStatsNCount = "ondemand_stats_n_count";
const std::string kOndemandAtomDropped = "ondemand_atom_dropped";
const std::string kOndemandStatsdStatsGetFailed = "ondemand_statsd_stats_get_failed";
const std::string kOndemandStatsdStatsEmpty = "ondemand_statsd_stats_empty";
const std::string kOndemandStatsdStatsGetSucceeded = "ondemand_statsd_stats_get_succeeded";

/// Labels of trace slices; the name of the stage or event follows.
const std::string kApplierLabel = "Applier: ";
const std::string kApplierBlockedLabel = "Applier Blocked: ";
const std::string kGuardLabel = "Guard: ";
const std::string kProcessingLabel = "Processing: ";
const std::string kMonitorLabel = "Monitor: ";

}  // namespace Velo::OS::Telemetry
