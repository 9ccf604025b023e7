#include "telemetry/ApplierBlocklist.h"

#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

using Rows = std::map<std::string, std::set<std::string>>;

const Rows& ApplierBlocklist::blocklist_ = immortal<Rows>(Rows{
    {"device_info_applier", {"telemetry_event_filtering_performance"}},
    {"identity_applier", {"telemetry_event_filtering_performance"}},
});

bool ApplierBlocklist::hasBlockedEvents(const std::string& applierName) { return blocklist_.count(applierName) > 0; }

bool ApplierBlocklist::isApplierBlocked(const std::string& applierName, const std::string& eventName) {
    const auto row = blocklist_.find(applierName);
    return row != blocklist_.end() && row->second.count(eventName) > 0;
}

}  // namespace Velo::OS::Telemetry
