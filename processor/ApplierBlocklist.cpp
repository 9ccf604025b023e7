#include "telemetry/ApplierBlocklist.h"

namespace Velo::OS::Telemetry {

const std::map<std::string, std::set<std::string>> ApplierBlocklist::blocklist_ = {
    {"device_info_applier", {"telemetry_event_filtering_performance"}},
    {"identity_applier", {"telemetry_event_filtering_performance"}},
};

bool ApplierBlocklist::hasBlockedEvents(const std::string& applierName) { return blocklist_.count(applierName) > 0; }

bool ApplierBlocklist::isApplierBlocked(const std::string& applierName, const std::string& eventName) {
    const auto row = blocklist_.find(applierName);
    return row != blocklist_.end() && row->second.count(eventName) > 0;
}

}  // namespace Velo::OS::Telemetry
