#pragma once

#include <cstdint>
#include <memory>
#include <system_error>
#include <variant>

#include "telemetry/Export.h"
#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// What a guard, an applier or the whole pipeline makes of an event: the event itself, an error, or nothing (the state
/// of a fresh result and of one whose value has been taken). The state is one byte behind the 16 bytes it describes.
class [[nodiscard]] TELEMETRY_EXPORT EventResult {
public:
    enum class State : uint8_t { Empty, Value, Error };

    EventResult() = default;
    EventResult(std::unique_ptr<TelemetryEvent> event) : content_(std::move(event)) {}
    EventResult(std::error_code error) : content_(error) {}

    State state() const { return static_cast<State>(content_.index()); }
    bool hasValue() const { return state() == State::Value; }
    bool hasError() const { return state() == State::Error; }

    /// The error; a code of value 0 if there is none.
    std::error_code error() const;

    /// Hands the event over (it may be null: whatever the stage put in) and leaves the result empty. Aborts the process
    /// through `__android_log_assert` in any state but `Value`.
    std::unique_ptr<TelemetryEvent> takeValue();

private:
    // The order of the alternatives gives the numbers of the states.
    std::variant<std::monostate, std::unique_ptr<TelemetryEvent>, std::error_code> content_;
};

}  // namespace Velo::OS::Telemetry
