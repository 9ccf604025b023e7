#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace Velo::OS::Telemetry {

/// Names of the events that carry the legacy session context even if most events do not: those of the connection,
/// pairing and streaming features.
inline constexpr std::array<std::string_view, 65> kSessionExemptEvents = {
    "arvo_connection_requested",
    "arvo_connection_established",
    "arvo_connection_rejected",
    "arvo_connection_lost",
    "arvo_connection_restored",
    "arvo_connection_signal_report",
    "arvo_connection_retry_attempt",
    "arvo_connection_retry_exhausted",
    "arvo_connection_handover_started",
    "arvo_connection_handover_finished",
    "arvo_connection_transport_selected",
    "arvo_connection_transport_switched",
    "arvo_connection_bandwidth_estimated",
    "arvo_connection_latency_measured",
    "arvo_connection_keepalive_missed",
    "arvo_connection_idle_timeout",
    "arvo_connection_user_disconnected",
    "arvo_connection_peer_disconnected",
    "arvo_connection_state_changed",
    "arvo_connection_permission_requested",
    "arvo_connection_permission_denied",
    "arvo_connection_diagnostics_summary",
    "arvo_pairing_scan_started",
    "arvo_pairing_scan_stopped",
    "arvo_pairing_candidates_found",
    "arvo_pairing_candidate_selected",
    "arvo_pairing_code_shown",
    "arvo_pairing_code_entered",
    "arvo_pairing_code_mismatched",
    "arvo_pairing_attempt_started",
    "arvo_pairing_attempt_failed",
    "arvo_pairing_completed",
    "arvo_pairing_cancelled_by_user",
    "arvo_pairing_timed_out",
    "arvo_pairing_key_exchanged",
    "arvo_pairing_key_rotated",
    "arvo_pairing_device_renamed",
    "arvo_pairing_device_removed",
    "arvo_pairing_companion_app_missing",
    "arvo_pairing_firmware_check_finished",
    "arvo_streaming_session_requested",
    "arvo_streaming_session_started",
    "arvo_streaming_session_paused",
    "arvo_streaming_session_resumed",
    "arvo_streaming_session_stopped",
    "arvo_streaming_session_failed",
    "arvo_streaming_quality_report",
    "arvo_streaming_quality_changed",
    "arvo_streaming_bitrate_changed",
    "arvo_streaming_resolution_changed",
    "arvo_streaming_codec_selected",
    "arvo_streaming_codec_fallback",
    "arvo_streaming_frame_dropped",
    "arvo_streaming_first_frame_rendered",
    "arvo_streaming_buffer_underrun",
    "arvo_streaming_audio_route_changed",
    "arvo_streaming_audio_desynchronised",
    "arvo_streaming_input_forwarded",
    "arvo_streaming_encoder_overloaded",
    "arvo_streaming_thermal_throttled",
    "arvo_streaming_receiver_lost",
    "arvo_streaming_user_feedback_given",
    "companion_link_handshake_finished",
    "companion_link_protocol_mismatched",
    "remote_display_route_selected",
};

static_assert(
    [] {
        auto names = kSessionExemptEvents;
        std::sort(names.begin(), names.end());
        return std::adjacent_find(names.begin(), names.end()) == names.end();
    }(),
    "names must be distinct");
static_assert(std::all_of(kSessionExemptEvents.begin(), kSessionExemptEvents.end(),
                          [](std::string_view name) {
                              constexpr std::string_view kLowerSnakeCase = "abcdefghijklmnopqrstuvwxyz0123456789_";
                              return name.size() >= 20 && name.size() <= 60 &&
                                     name.find_first_not_of(kLowerSnakeCase) == std::string_view::npos;
                          }),
              "names are 20 to 60 characters of lower snake case; a shorter list leaves empty ones");

}  // namespace Velo::OS::Telemetry
