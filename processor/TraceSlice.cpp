#include "processor/TraceSlice.h"

namespace Velo::OS::Telemetry {

TraceSlice::TraceSlice(const char* name) {
    if (trace::isEnabled()) trace::beginSlice(name);
}

TraceSlice::TraceSlice(const std::string& label, const std::string& subject) {
    if (trace::isEnabled()) trace::beginSlice(label + subject);
}

void TraceSlice::end() {
    if (ended_) return;
    ended_ = true;
    if (trace::isEnabled()) trace::endSlice();
}

}  // namespace Velo::OS::Telemetry
