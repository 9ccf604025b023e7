#include "platform/logging/HostLoggerBackend.h"

#include <utility>

#include "conversion/Immortal.h"
#include "telemetry/QvLoggerWrapper.h"

namespace {

std::function<bool(long)>& adjustTimeHandler() {
    static auto& handler = Velo::OS::Telemetry::immortal<std::function<bool(long)>>();
    return handler;
}

}  // namespace

namespace telemetry {

QvLoggerWrapper& QvLoggerWrapper::instance() {
    static QvLoggerWrapper wrapper;
    return wrapper;
}

void QvLoggerWrapper::adjustTime(long adjustmentMs, void (*onSuccess)()) {
    const std::function<bool(long)>& handler = adjustTimeHandler();
    if (handler && handler(adjustmentMs)) onSuccess();
}

}  // namespace telemetry

void Velo::OS::Telemetry::host::setAdjustTimeHandler(std::function<bool(long)> handler) {
    adjustTimeHandler() = std::move(handler);
}
