#pragma once

#include <binder/PersistableBundle.h>

#include <functional>

namespace Velo::OS::Telemetry {

/// Receives a monitor event: an envelope bundle with one key, the monitor event's name, whose value is the body.
///
/// The bundle is lent for the call. The flag is always false; the uid is the one to which the report is attributed.
/// The stage that reports may hold its lock, so a callback must not feed events back into the pipeline. It is called
/// from several threads at once: the stages that share it hold locks of their own or none. A stage given an empty
/// callback throws `std::bad_function_call` at its first report.
using MonitorEventCallback =
    std::function<void(const android::os::PersistableBundle& monitorEvent, bool flag, unsigned int uid)>;

}  // namespace Velo::OS::Telemetry
