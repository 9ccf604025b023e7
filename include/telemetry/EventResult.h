#pragma once

#include <cstdint>
#include <memory>
#include <system_error>
#include <utility>

#include "telemetry/Export.h"
#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// What a guard, an applier or the whole pipeline makes of an event: the event itself, an error, or nothing (the state
/// of a fresh result, of one that was moved from and of one whose value has been taken).
///
/// The layout is ABI: 16 bytes, and behind them one byte of state that says what they hold.
class [[nodiscard]] TELEMETRY_EXPORT EventResult {
public:
    enum class State : uint8_t { Empty, Value, Error };

    EventResult() noexcept {}
    EventResult(std::unique_ptr<TelemetryEvent> event) noexcept : event_(std::move(event)), state_(State::Value) {}
    EventResult(std::error_code error) noexcept : error_(error), state_(State::Error) {}
    EventResult(EventResult&& other) noexcept { moveFrom(other); }
    EventResult& operator=(EventResult&& other) noexcept;
    ~EventResult() { clear(); }

    State state() const { return state_; }
    bool hasValue() const { return state_ == State::Value; }
    bool hasError() const { return state_ == State::Error; }

    /// The error; a code of value 0 if there is none.
    std::error_code error() const { return hasError() ? error_ : std::error_code(); }

    /// Hands the event over (it may be null: whatever the stage put in) and leaves the result empty. Aborts the process
    /// through `__android_log_assert` in any state but `Value`.
    std::unique_ptr<TelemetryEvent> takeValue();

private:
    void moveFrom(EventResult& other) noexcept;
    void clear() noexcept;

    union {
        std::unique_ptr<TelemetryEvent> event_;
        std::error_code error_;
    };
    State state_ = State::Empty;
};

}  // namespace Velo::OS::Telemetry
