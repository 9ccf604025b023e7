#include "benchmarks/gate/EventLines.h"

#include <initializer_list>
#include <iterator>
#include <sstream>
#include <string_view>

namespace Velo::OS::Telemetry::benchmarks {

namespace {

/// A linear congruential generator (Knuth's MMIX constants): the standard's distributions differ between libraries.
class Dice {
public:
    uint32_t below(uint32_t limit) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<uint32_t>((state_ >> 32) % limit);
    }
    uint32_t between(uint32_t low, uint32_t high) { return low + below(high - low + 1); }
    template <typename Container>
    const auto& pick(const Container& items) {
        return *(items.begin() + below(static_cast<uint32_t>(items.size())));
    }

private:
    uint64_t state_ = 41;
};

constexpr std::initializer_list<const char*> kWords = {
    "screen",       "opened",  "after", "resume", "by",   "user",      "retry", "café", "slow", "\\\"fast path\\\"",
    "cache\\tmiss", "network", "idle",  "ok",     "from", "background"};
constexpr std::initializer_list<const char*> kScreens = {"Home", "Settings", "Réglages", "Now playing", "Library"};

std::string number(uint32_t value) { return std::to_string(value); }

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string decimal(uint32_t value, uint32_t unit) {
    const std::string digits = number(unit + value % unit);
    return number(value / unit) + "." + digits.substr(1);
}

std::string note(Dice& dice) {
    const bool isLong = dice.below(100) < 15;
    const size_t length = isLong ? dice.between(150, 310) : dice.between(10, 44);
    std::string text = dice.pick(kWords);
    while (text.size() < length) text.append(" ").append(dice.pick(kWords));
    return text;
}

std::string hexDigits(Dice& dice, size_t count) {
    std::string digits;
    while (digits.size() < count) digits += "0123456789abcdef"[dice.below(16)];
    return digits;
}

/// The value of the optional member.
std::string optionalMember(const std::string& name, Dice& dice) {
    if (name == "screen") return quoted(dice.pick(kScreens));
    if (name == "duration_ms") return decimal(dice.below(9'000'000), 1000);
    if (name == "ok") return dice.below(5) > 0 ? "true" : "false";
    if (name == "tags") return R"(["beta",)" + quoted(dice.pick(kWords)) + "]";
    if (name == "extra") {
        return R"({"k1":)" + number(dice.below(100)) + R"(,"k2":)" + quoted(dice.pick(kWords)) + R"(,"k3":[)" +
               number(dice.below(10)) + "," + number(dice.below(10)) + ",1]}";
    }
    if (name == "fps") return decimal(dice.between(2400, 12000), 100);
    if (name == "count") return number(dice.below(5000));
    if (name == "url") return quoted("https://example.com/v2/items/" + hexDigits(dice, 12) + "?ref=home");
    if (name == "error") return "null";
    return quoted(note(dice));
}

std::string makeData(Dice& dice) {
    std::string data = R"({"utl_app_id":)" + number(dice.between(1, 40)) + R"(,"utl_realtime_ms":)" +
                       number(dice.between(100'000, 80'000'000)) + R"(,"utl_logging_package":)" +
                       quoted(dice.pick(loggingPackages())) + R"(,"session_id":)" + quoted(hexDigits(dice, 32)) +
                       R"(,"seq":)" + number(dice.below(100'000)) + R"(,"flags":)" + number(dice.below(1 << 24)) +
                       R"(,"build":"v51.3.)" + number(dice.below(400)) + '"';
    constexpr const char* kOptional[] = {"screen", "duration_ms", "ok",  "tags",  "extra",
                                         "fps",    "count",       "url", "error", "note"};
    uint32_t left = std::size(kOptional);
    uint32_t wanted = dice.between(3, 7);
    for (const std::string name : kOptional) {
        if (dice.below(left--) >= wanted) continue;
        --wanted;
        data.append(",").append(quoted(name)).append(":").append(optionalMember(name, dice));
    }
    return data + "}";
}

/// The rank of an event's name: the second is half as frequent as the first, the third a third.
size_t drawRank(Dice& dice) {
    static const std::vector<uint32_t> sums = [] {
        std::vector<uint32_t> all;
        uint32_t sum = 0;
        for (uint32_t rank = 1; rank <= eventNames().size(); ++rank) all.push_back(sum += 1'000'000 / rank);
        return all;
    }();
    const uint32_t draw = dice.below(sums.back());
    size_t rank = 0;
    while (sums[rank] <= draw) ++rank;
    return rank;
}

}  // namespace

const std::vector<std::string>& eventNames() {
    static const std::vector<std::string> names = [] {
        std::istringstream text(
            "screen_view arvo_connection_retry_attempt app_launch app_exit device_health sensor_batch battery_level "
            "arvo_streaming_quality_report arvo_streaming_frame_dropped storage_write_stats compositor_frame_stats "
            "arvo_streaming_session_started arvo_streaming_session_stopped arvo_connection_requested "
            "audio_route_changed "
            "arvo_connection_established arvo_connection_lost arvo_connection_signal_report arvo_pairing_scan_started "
            "arvo_pairing_candidates_found sync_finished arvo_pairing_attempt_failed arvo_pairing_completed app_crash "
            "settings_snapshot histogram_export display_state wifi_scan_summary wakeup_alarm_fired boot_phase "
            "network_bytes_by_app input_latency_sample process_memory_snapshot surface_refresh_change "
            "kernel_wakelock_total hal_camera_session hal_vibrator_pulse notification_posted notification_dismissed "
            "search_performed share_completed");
        return std::vector<std::string>(std::istream_iterator<std::string>(text), {});
    }();
    return names;
}

const std::vector<uint32_t>& knownUids() {
    static const std::vector<uint32_t> uids = {10123, 10131, 1010123};
    return uids;
}

const std::vector<std::string>& loggingPackages() {
    static const std::vector<std::string> packages = {"com.example.music", "com.example.gallery", "com.example.chat",
                                                      "com.example.home"};
    return packages;
}

std::vector<std::string> makeEventLines(Users users, size_t count) {
    Dice dice;
    const size_t names = eventNames().size(), pairs = names * knownUids().size();
    std::vector<std::string> lines;
    lines.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const size_t rank = i < pairs ? i % names : drawRank(dice);
        uint32_t uid = i < pairs ? knownUids()[i / names] : dice.pick(knownUids());
        if (users == Users::New && dice.below(5) > 0) uid = 20'000 + i;
        lines.push_back(R"({"name":)" + quoted(eventNames()[rank]) + R"(,"uid":)" + number(uid) +
                        R"(,"format":"json","data":)" + makeData(dice) + "}");
    }
    return lines;
}

}  // namespace Velo::OS::Telemetry::benchmarks
