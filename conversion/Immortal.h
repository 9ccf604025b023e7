#pragma once

#include <utility>

namespace Velo::OS::Telemetry {

/// Makes a value that is never destroyed: for what is static, because events may still be processed, by other threads
/// and by destructors of the service, while the process exits and destroys its statics.
template <typename T, typename... Arguments>
T& immortal(Arguments&&... arguments) {
    return *new T(std::forward<Arguments>(arguments)...);
}

}  // namespace Velo::OS::Telemetry
