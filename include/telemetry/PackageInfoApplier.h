#pragma once

#include <memory>

#include "telemetry/IAppOverrideManager.h"
#include "telemetry/IApplier.h"
#include "telemetry/IPackageInfoManager.h"

namespace Velo::OS::Telemetry {

/// "package_info_applier": adds the logging application ("sdk_app_package", "sdk_app_package_version_name",
/// "sdk_app_package_version_code") and the one in the foreground ("fg_app_package_name", "fg_app_package_version").
///
/// An application's override of its version name or code is added as the JSON value that it is.
class TELEMETRY_EXPORT PackageInfoApplier : public IApplier {
public:
    /// Neither may be null.
    PackageInfoApplier(std::shared_ptr<IPackageInfoManager> packageInfoManager,
                       std::shared_ptr<IAppOverrideManager> overrideManager);
    /// Without overrides.
    explicit PackageInfoApplier(std::shared_ptr<IPackageInfoManager> packageInfoManager);

    EventResult apply(std::unique_ptr<TelemetryEvent> event) override;

private:
    std::shared_ptr<IPackageInfoManager> packageInfoManager_;
    std::shared_ptr<IAppOverrideManager> overrideManager_;
};

}  // namespace Velo::OS::Telemetry
