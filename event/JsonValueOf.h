#pragma once

#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// What `getJsonValue` returns, without the copy if the event is of the library's own class: `copy` holds that of any
/// other, which may answer with what it likes; null if that was refused as too deep. Valid until the event
/// changes or dies.
const Json::Value& jsonValueOf(TelemetryEvent& event, Json::Value& copy);

/// Whether an event of that name cannot have the data, because it nests deeper than `kMaxNesting`. It is then null, and
/// the log says so.
bool refuseTooDeep(const std::string& name, Json::Value& data);

}  // namespace Velo::OS::Telemetry
