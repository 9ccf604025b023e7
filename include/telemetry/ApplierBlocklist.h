#pragma once

#include <map>
#include <set>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Which appliers must skip which events. Fixed, so that any thread may ask.
class TELEMETRY_EXPORT ApplierBlocklist {
public:
    /// Both names are compared exactly.
    static bool isApplierBlocked(const std::string& applierName, const std::string& eventName);

private:
    friend class TelemetryEventProcessor;

    /// Whether the applier must skip any event at all: if not, the event's name need not be read.
    static bool hasBlockedEvents(const std::string& applierName);

    // A reference to what is never destroyed: events may be processed while the process exits.
    static const std::map<std::string, std::set<std::string>>& blocklist_;
};

}  // namespace Velo::OS::Telemetry
