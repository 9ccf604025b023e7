#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// An installed application. The layout is ABI.
struct PackageInfo {
    std::string packageName;
    int64_t versionCode = 0;
    std::string versionName;
};

/// Knows the installed applications. Injected by the service; called from every thread that processes events.
///
/// The service was compiled against these slots; the two destructors are entries 1 and 2, and entries that this library
/// does not call are reserved in their places.
class TELEMETRY_EXPORT IPackageInfoManager {
public:
    virtual ~IPackageInfoManager() = default;
    /// What is known of the package that the uid runs. Its name is as the event says, and may be empty.
    virtual PackageInfo getPackageInfo(const std::string& packageName, uint32_t uid) = 0;
    virtual void reserved4() {}
    virtual void reserved5() {}
    virtual void reserved6() {}
    /// The application in the foreground.
    virtual PackageInfo getForegroundPackageInfo() = 0;
};

}  // namespace Velo::OS::Telemetry
