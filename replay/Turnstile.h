#pragma once

#include <atomic>
#include <cstdint>

namespace Velo::OS::Telemetry::replay {

/// Lets the holders of tickets pass in the order of these, 0 first, one at a time. Each ticket must come. Safe to use
/// from several threads.
class Turnstile {
public:
    /// Waits until all tickets before this one have passed.
    void wait(uint64_t ticket) const {
        for (uint64_t next = next_; next != ticket; next = next_) next_.wait(next);
    }
    /// The ticket whose turn it is has passed.
    void pass() {
        ++next_;
        next_.notify_all();
    }

private:
    std::atomic<uint64_t> next_ = 0;
};

/// The turn of a ticket, for as long as it lives.
class Turn {
public:
    Turn(Turnstile& turnstile, uint64_t ticket) : turnstile_(turnstile) { turnstile_.wait(ticket); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { turnstile_.pass(); }

private:
    Turnstile& turnstile_;
};

}  // namespace Velo::OS::Telemetry::replay
