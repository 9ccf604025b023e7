#!/usr/bin/env python3
"""Makes the sample day: the telemetry of one device from 06:00 to 06:00, as telemetry-replay reads it.

    python3 samples/make_day.py > samples/day.jsonl
    python3 samples/make_day.py schema > samples/schema.json    # the event schema that the device has that day

The day has one JSON object a line, in time order. The device starts at 06:00 after an overnight update; a second user
(Android user 10) often holds it in the evening. Every run writes the same bytes: one fixed seed, no clock, no locale.
"""

import hashlib
import json
import random
import sys
from collections import namedtuple

HOUR_MS = 3_600_000
BUILD = "84210.7.250.3"
DAY_START_MS = 1_741_759_200_000  # the wall clock at 06:00, when the boot-time clock is 0
ACCOUNTS = {0: 100004217733019, 10: "100009981245770"}  # the second user's clients log the id as text
TITLES = ("Home", "Überblick", "Réglages › Réseau", "設定", "Фото дня", "Galería 📷",
          'Now playing: "Nightfall" (live)', "C:\\share\\notes.txt", "two\nlines", "50 % off – today only")
ATOMS = (  # every kind of atom, with the ends of the ranges of ids
    (111222, "generic_record"), (115000, "hal_camera_session"), (119999, "hal_vibrator_pulse"),
    (120000, "wifi_scan_summary"), (124310, "process_memory_snapshot"), (129999, "network_bytes_by_app"),
    (2, "wakeup_alarm_fired"), (43, "display_state"), (99999, "kernel_wakelock_total"), (1, "boot_phase"),
    (100310, "input_latency_sample"), (130000, "surface_refresh_change"))
Client = namedtuple("Client", "package app_id uid version")
MUSIC = Client("com.example.music", 512004417820944, 10123, "8.41.1-beta2")
GALLERY = Client("com.example.gallery", 512004417821007, 10131, "3.0.17")
CHAT = Client("com.example.chat", 512004417821133, 10145, "2025.9.4")
APPS = (MUSIC, GALLERY, CHAT, Client("com.example.home", 512004417820931, 10064, "12.3.0"),
        Client("com.example.fitness", 512004417822046, 10187, "1.12"))
LINK = Client("com.example.companion.link", 512004417830002, 10102, "5.7.31")
SYSTEM = Client("com.example.system", 0, 1000, "14")


class Dice(random.Random):
    """Draws from random() alone: the one stream that Python keeps the same from version to version."""

    def between(self, low, high):
        return low + int(self.random() * (high - low + 1))

    def pick(self, items):
        return items[self.between(0, len(items) - 1)]

    def chance(self, probability):
        return self.random() < probability

    def real(self, low, high, digits=2):
        return round(low + (high - low) * self.random(), digits)

    def hex(self, digits):
        return "%0*x" % (digits, self.between(0, 16 ** digits - 1))


def holder(d, t, app):
    """The app as run by whoever holds the device: from 17:00 to 22:00 that is often the second user."""
    return app._replace(uid=app.uid + 1_000_000) if 11 <= t // HOUR_MS < 16 and d.chance(0.4) else app


def event(t, who, name, envelope, payload, fields):
    """A moment and the input line logged then: what every client adds comes first, a uid of 1000 is the default."""
    account = {"id": ACCOUNTS[who.uid // 100_000]} if who.uid >= 10_000 else {}
    body = {"utl_realtime_ms": t, "utl_uptime_ms": t * 4 // 5, "utl_logging_package": who.package,
            "utl_app_id": who.app_id, "sdk_app_package_version_name": who.version, **account, **fields}
    return t, {"name": name, **({} if who.uid == 1000 else {"uid": who.uid}), **envelope, payload: body}


def bundled(t, who, name, urgent=False, **fields):
    return event(t, who, name, {"realtime": True} if urgent else {}, "bundle", fields)


def as_json(t, who, name, envelope=None, **fields):
    return event(t, who, name, envelope or {}, "data", fields)


# A family takes the dice and a moment (ms since 06:00) and yields events from that moment on.

def app_use(d, t):
    who = holder(d, t, d.pick(APPS))
    session = {"__sessions_v2": '{"s":"%s","n":%d}' % (d.hex(8), d.between(1, 9))} if d.chance(0.4) else {}
    yield bundled(t, who, "app_launch", utl_eventTag=d.between(1, 64), kind=d.pick(("cold", "warm", "hot")), **session,
                  first_frame_ms=d.real(80, 1900), memory={"pss_kb": d.between(40_000, 400_000), "swapped": False})
    for _ in range(d.between(1, 3)):
        t += d.between(1_500, 90_000)
        yield as_json(t, who, "screen_view", title=d.pick(TITLES), screen_id=d.between(1, 240), **session,
                      scroll_depth=d.real(0, 1), tags=[d.pick(("tab", "deep_link", "back")), d.hex(4)])
    t += d.between(1_000, 60_000)
    yield bundled(t, who, "app_exit", reason=d.pick(("user", "low_memory")), wall_time_ms=DAY_START_MS + t)


def pairing(d, t):
    who, attempt = holder(d, t, LINK), d.hex(12)
    yield bundled(t, who, "arvo_pairing_scan_started", attempt=attempt, transports=["ble", "wlan"], timeout_ms=30_000)
    t += d.between(800, 9_000)
    yield bundled(t, who, "arvo_pairing_candidates_found", attempt=attempt, candidates=[
        {"address_hash": d.hex(10), "rssi_dbm": -d.between(38, 96), "bonded": d.chance(0.4),
         "services": ["stream", "sync"]} for _ in range(d.between(1, 4))])
    t += d.between(2_000, 15_000)
    yield bundled(t, who, d.pick(("arvo_pairing_completed", "arvo_pairing_attempt_failed")), True, attempt=attempt,
                  elapsed_s=d.real(3, 24))


def connection(d, t):
    who, link = holder(d, t, LINK), {"link": d.hex(8), "transport": d.pick(("ble", "wlan", "usb"))}
    yield as_json(t, who, "arvo_connection_requested", **link, origin=d.pick(("user", "auto")))
    t += d.between(90, 4_000)
    yield bundled(t, who, "arvo_connection_established", **link, key_id=d.between(1 << 33, 1 << 52),
                  rtt_ms=d.real(2, 80), steps=[["resolve", d.between(1, 90)], [{"handshake": d.real(5, 400)}]])
    t += d.between(20_000, 900_000)
    yield bundled(t, who, d.pick(("arvo_connection_lost", "arvo_connection_signal_report")), **link,
                  loss=d.real(0, 0.3, 4), rssi_dbm=-d.between(40, 97), bytes_total=d.between(10_000, 9_000_000_000))


def streaming(d, t):
    who, stream = holder(d, t, d.pick((MUSIC, GALLERY))), {"stream": d.hex(8), "codec": d.pick(("opus", "aac", "av1"))}
    yield bundled(t, who, "arvo_streaming_session_started", **stream, title=d.pick(TITLES))
    for _ in range(d.between(1, 3)):
        t += d.between(15_000, 120_000)
        yield bundled(t, who, "arvo_streaming_quality_report", **stream, bitrate_kbps=d.real(60, 5000, 1),
                      stalls_ms=[d.between(20, 900) for _ in range(d.between(0, 5))],
                      buffer={"level_ms": d.between(0, 8000), "floor_ms": 250, "dropped": d.between(0, 40)})
    t += d.between(5_000, 200_000)
    yield as_json(t, who, "arvo_streaming_session_stopped", **stream, played_s=d.real(4, 5400, 1))


def app_ops(d, t):
    app = holder(d, t, d.pick(APPS))
    op = {"op": d.pick(("camera", "record_audio", "fine_location")), "op_caller_android_uid": app.uid,
          "op_caller_package": app.package, "duration_ms": d.between(5, 60_000)}
    log, fields = d.pick(((bundled, op), (as_json, {"data": op})))
    yield log(t, SYSTEM, "arvo_sensitive_app_ops_monitor", **fields)
    yield as_json(t + 40, SYSTEM, "arvo_api_permission_state_event", source=d.pick(("listener", "snapshot")),
                  android_uid=app.uid, permission="com.example.permission.CAMERA", granted=d.chance(0.8))


def markers(d, t):
    who, name = holder(d, t, d.pick(APPS)), d.pick(("perf", "perf_utl"))
    marker = {"marker_id": d.pick((1310721, 1310733, 40501249)), "duration_ms": d.between(3, 4_000)}
    if d.chance(0.5):
        points = [{"name": point, "at_ms": d.real(0, 900)} for point in ("bind", "layout", "draw")]
        yield bundled(t, who, name, **marker, points=points)
    else:
        yield as_json(t, who, name, perf_payload_json=json.dumps({**marker, "action": d.pick(("success", "fail"))}))


def on_demand(d, t):
    yield as_json(t, SYSTEM._replace(uid=1066), "ondemand_statsd_utl", campaign_id=d.pick((4102, 4117, 5_000_000_042)),
                  bucket={"start_ms": t - HOUR_MS // 2, "count": d.between(1, 900), "mean": d.real(0, 40)})


def atoms(d, t):
    atom_id, name = d.pick(ATOMS)
    who = SYSTEM._replace(uid=d.pick((1000, 1000, 1041, 10123)))
    entries = [{"uid": d.between(10_060, 10_190), "bytes": d.between(0, 1 << 36), "tag": None} for _ in range(2)]
    yield as_json(t, who, name, {"format": "atom", "atom_id": atom_id}, build_version=BUILD, entries=entries,
                  level=d.real(0, 100), state=d.pick(("ON", "OFF", "DOZE")))


def native(d, t):
    pathway = d.pick(("libtelemetry", "osndk"))
    detail = {"latency_us": d.between(20, 90_000), "detail": d.pick(("ok", "retry after EAGAIN", 'path="/data/tmp"'))}
    yield as_json(t, SYSTEM._replace(uid=1003), "compositor_frame_stats", {"format": pathway}, **detail)
    yield bundled(t + 9, SYSTEM._replace(uid=1013), "storage_write_stats", utl_logging_pathway=pathway, **detail)


def device(d, t):
    yield bundled(t, SYSTEM, "sensor_batch", applied_sample_rate=100, sensor=d.pick(("accelerometer", "light")),
                  first_ns=t * 1_000_000, readings=[d.real(-20, 20, 3) for _ in range(d.between(4, 12))])
    yield bundled(t + 3, SYSTEM, "device_health", battery_pct=max(4, 100 - t // 900_000), build_version=BUILD, zones=[
        {"name": zone, "c": d.real(25, 60, 1), "throttled": d.chance(0.1)} for zone in ("cpu", "gpu", "skin")])
    yield as_json(t + 5, SYSTEM, "display_state", state=d.pick(("ON", "OFF", "DOZE")))  # also logged as an atom


def reports(d, t):
    yield bundled(t, d.pick(APPS), "app_crash", True, message='"size > 0" failed\n\tin decode()', frames=[
        {"fn": "Codec::run", "pc": d.between(1 << 40, 1 << 47), "file": "src/%s.cpp" % d.hex(6)} for _ in range(40)])
    if t > 18 * HOUR_MS:  # the nightly export, with more fields than one event should carry
        yield as_json(t + 90, SYSTEM, "histogram_export", **{"h%04d" % cell: d.between(0, 9) for cell in range(2_600)})


def bursts(d, t):
    """A link that retries 200 times in five seconds; in the evening, a stream of the second user that stutters."""
    who, name, count = LINK, "arvo_connection_retry_attempt", 200
    if t > 12 * HOUR_MS:
        who, name, count = MUSIC._replace(uid=1010123), "arvo_streaming_frame_dropped", 60
    for attempt in range(1, count + 1):
        t += d.between(10, 40)
        yield bundled(t, who, name, attempt % 20 == 0, link="5e0c91d7", attempt=attempt, delay_ms=d.real(0, 50))


def mistakes(d, t):
    """What clients get wrong: every line is good input, and some field of it is not what the pipeline looks for."""
    for text in ('{"marker_id": 40501249, "trace": ', "[40501249]", '{"action":"success"}', '{"marker_id":-1}'):
        yield as_json(t, CHAT, "perf_utl", perf_payload_json=text)
    yield as_json(t, CHAT, "perf", duration_ms=12)
    yield as_json(t, CHAT, "perf", marker_id=1310733, perf_payload_json="{broken")
    yield as_json(t, SYSTEM, "ondemand_statsd_utl", metric="no campaign")
    yield as_json(t, SYSTEM, "ondemand_statsd_utl", campaign_id="4102")
    yield as_json(t, CHAT, "screen_view", utl_app_id="512004417821133", id="guest", title="\x1b[1mbold")
    yield as_json(t, SYSTEM, "storage_write_stats", {"format": "osndk"}, utl_realtime_ms="late", realtime=True)
    yield bundled(t, SYSTEM, "storage_write_stats", utl_logging_pathway="LibTelemetry", latency_us=7)
    yield bundled(t, SYSTEM, "settings_snapshot", languages=["français", "日本語"], overrides={}, values=[
        {"key": "locale", "value": "fr-CA"}, 3, 0.5, "x", [1, [True]]])


FAMILIES = (  # how often each family begins in each hour of the day
    #        hour: 678901234567890123012345
    (app_use,       "579976697679999973100013"),
    (pairing,       "011001100001121100000000"),
    (connection,    "243322332234432210000001"),
    (streaming,     "243211232123566421000000"),
    (app_ops,       "234333343334444321000001"),
    (markers,       "455444454445666531000012"),
    (on_demand,     "111111111111111111111111"),
    (atoms,         "777666676667788654433345"),
    (native,        "233322332223333221111112"),
    (device,        "444444444444444443333344"),
    (reports,       "010000100010001000010010"),
    (bursts,        "000000100000001000000000"),
    (mistakes,      "000100000000010000000000"),
)


SALT = "arvo-2025-03-12"
CATEGORIES = {"ESSENTIAL": (1, 2), "NON_ESSENTIAL": (10, 11), "NEEDS_REVIEW": (90,),
              "NON_ESSENTIAL_WITH_OTHER_CONSENT": (20,)}
EVENTS = (  # codes, the only purpose if there is one, string identifiers
    ((1,), None, "boot_phase display_state device_health app_crash storage_write_stats compositor_frame_stats "
                 "hal_camera_session hal_vibrator_pulse wifi_scan_summary process_memory_snapshot wakeup_alarm_fired "
                 "network_bytes_by_app kernel_wakelock_total input_latency_sample surface_refresh_change "
                 "generic_record"),
    ((1, 2), None, "arvo_sensitive_app_ops_monitor arvo_api_permission_state_event telemetry_event_filtering_audit "
                   "telemetry_service_event_rate_limit_breach telemetry_service_dynamic_telemetry_guard_performance "
                   "telemetry_service_dynamic_telemetry_monitor event_size_limit_breach "
                   "telemetry_service_dynamic_telemetry_config_performance arvo_telemetry_checkpoint_status_monitor "
                   "telemetry_event_intake_monitor_audit arvo_mobile_telemetry_statsd_verification_monitor"),
    ((10,), None, "app_launch app_exit arvo_pairing_scan_started arvo_pairing_candidates_found arvo_pairing_completed "
                  "arvo_connection_requested arvo_connection_established arvo_connection_lost "
                  "arvo_connection_signal_report arvo_connection_retry_attempt arvo_streaming_session_stopped "
                  "1310721 1310733 40501249"),
    ((1, 10), None, "arvo_pairing_attempt_failed"),  # the essential code counts
    ((11,), "Personalization", "screen_view arvo_streaming_frame_dropped"),
    ((11,), "Ads Personalization", "arvo_streaming_session_started"),
    ((20,), None, "arvo_streaming_quality_report sensor_batch"),
    ((90,), None, "histogram_export perf perf_utl ondemand_statsd_utl"),
    ((), None, "settings_snapshot"),
)
CAMPAIGNS = (((1,), None, "odt_4102 odt_4117"), ((10,), None, "odt_5000000042"))


def hashed(text):
    return hashlib.sha256((text + SALT).encode()).hexdigest()


def entries(classes):
    """One entry of the schema a line."""
    for codes, purpose, identifiers in classes:
        for identifier in identifiers.split():
            extra = {"extra_data_categories": {"granular": [hashed(purpose + identifier)]}} if purpose else {}
            yield json.dumps({"identifier": hashed(identifier), "categories": codes, **extra})


def schema():
    members = {"timestamp": str(DAY_START_MS), "salt": json.dumps(SALT),
               "settings_to_categories": json.dumps(CATEGORIES)}
    for name, classes in (("allowed_events", EVENTS), ("allowed_campaigns", CAMPAIGNS)):
        members[name] = "[\n    " + ",\n    ".join(sorted(entries(classes))) + "\n  ]"
    return "{\n" + ",\n".join('  "%s": %s' % member for member in members.items()) + "\n}\n"


def day():
    d = Dice(20250312)
    events = []
    for family, by_hour in FAMILIES:
        for hour, count in enumerate(by_hour):
            for _ in range(int(count)):
                events.extend(family(d, hour * HOUR_MS + d.between(30_000, HOUR_MS - 1)))
    return [line for _, line in sorted(events, key=lambda timed: timed[0])]


if __name__ == "__main__":
    if sys.argv[1:] == ["schema"]:
        sys.stdout.write(schema())
        sys.exit()
    for entry in day():
        sys.stdout.buffer.write(json.dumps(entry, ensure_ascii=False, separators=(",", ":")).encode() + b"\n")
