#pragma once

#include "telemetry/Export.h"

namespace telemetry {

/// The logging backend, which holds events logged before the wall clock could be trusted. Defined by its own library.
class TELEMETRY_EXPORT QvLoggerWrapper {
public:
    static QvLoggerWrapper& instance();

    QvLoggerWrapper(const QvLoggerWrapper&) = delete;
    QvLoggerWrapper& operator=(const QvLoggerWrapper&) = delete;

    /// Shifts the timestamps of the events held by `adjustmentMs` milliseconds; calls `onSuccess` if that succeeded,
    /// at once or later, on any thread.
    void adjustTime(long adjustmentMs, void (*onSuccess)());

private:
    QvLoggerWrapper() = default;
};

}  // namespace telemetry
