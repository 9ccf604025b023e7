#pragma once

#include "telemetry/TelemetryEvent.h"

namespace Velo::OS::Telemetry {

/// What `getJsonValue` returns, without the copy if the event is of the library's own class: `copy` holds that of any
/// other, which may answer with what it likes: null if that nests deeper than `kMaxNesting`. Valid until the event
/// changes or dies.
const Json::Value& jsonValueOf(TelemetryEvent& event, Json::Value& copy);

}  // namespace Velo::OS::Telemetry
