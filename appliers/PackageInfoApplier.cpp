#include "telemetry/PackageInfoApplier.h"

#include <utility>

#include "conversion/Immortal.h"
#include "telemetry/AppOverrideManager.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kPackage = immortal<std::string>("sdk_app_package");
const std::string& kVersionName = immortal<std::string>("sdk_app_package_version_name");
const std::string& kVersionCode = immortal<std::string>("sdk_app_package_version_code");
const std::string& kForegroundPackage = immortal<std::string>("fg_app_package_name");
const std::string& kForegroundVersion = immortal<std::string>("fg_app_package_version");

}  // namespace

PackageInfoApplier::PackageInfoApplier(std::shared_ptr<IPackageInfoManager> packageInfoManager,
                                       std::shared_ptr<IAppOverrideManager> overrideManager)
    : IApplier("package_info_applier"),
      packageInfoManager_(std::move(packageInfoManager)),
      overrideManager_(std::move(overrideManager)) {}

PackageInfoApplier::PackageInfoApplier(std::shared_ptr<IPackageInfoManager> packageInfoManager)
    : PackageInfoApplier(std::move(packageInfoManager), std::make_shared<AppOverrideManager>()) {}

EventResult PackageInfoApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    const uint32_t uid = event->uid();
    const int64_t appId = event->appId();
    const PackageInfo info = packageInfoManager_->getPackageInfo(event->loggingPackage(), uid);
    event->addString(kPackage, info.packageName);

    if (auto override = overrideManager_->getOverrideForKey(uid, appId, kVersionName)) {
        event->addJson(kVersionName, *std::move(override));
    } else {
        event->addString(kVersionName, info.versionName);
    }
    if (auto override = overrideManager_->getOverrideForKey(uid, appId, kVersionCode)) {
        event->addJson(kVersionCode, *std::move(override));
    } else {
        event->addLong(kVersionCode, info.versionCode);
    }

    const PackageInfo foreground = packageInfoManager_->getForegroundPackageInfo();
    event->addString(kForegroundPackage, foreground.packageName);
    event->addString(kForegroundVersion, foreground.versionName);
    return event;
}

}  // namespace Velo::OS::Telemetry
