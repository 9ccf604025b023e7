#pragma once

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <map>
#include <vector>

// An executable that includes this, in one source, has clocks that tests set: its `clock_gettime` is the one that every
// shared library finds, the C++ library's clocks among them.

namespace Velo::OS::Telemetry::fakes {

constexpr clockid_t kMonotonic = 1, kWall = 5, kBoot = 7;  // the kernel's numbers

/// What each clock shows; one that is missing fails; none at all: the truth.
inline std::map<clockid_t, int64_t> clocksNs;
inline std::vector<clockid_t> clockReads;

}  // namespace Velo::OS::Telemetry::fakes

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* reading) {
    using namespace Velo::OS::Telemetry::fakes;
    if (clocksNs.empty()) return static_cast<int>(::syscall(SYS_clock_gettime, clock, reading));
    clockReads.push_back(clock);
    const auto found = clocksNs.find(clock);
    if (found == clocksNs.end()) {
        errno = EINVAL;
        return -1;
    }
    *reading = {found->second / 1'000'000'000, found->second % 1'000'000'000};
    return 0;
}
