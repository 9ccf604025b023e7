#include "telemetry/IdentityApplier.h"

#include <utility>

#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kId = immortal<std::string>("id");

}  // namespace

IdentityApplier::IdentityApplier(std::shared_ptr<IIdentityManager> identityManager,
                                 std::shared_ptr<IAppOverrideManager> overrideManager)
    : IApplier("identity_applier"),
      identityManager_(std::move(identityManager)),
      overrideManager_(std::move(overrideManager)) {}

EventResult IdentityApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    const uint32_t uid = event->uid();
    if (event->arvoUserId() != 0) return event;

    std::string id = identityManager_->getUserIdForUid(uid);
    const std::optional<Json::Value> override = overrideManager_->getOverrideForKey(uid, event->appId(), kId);
    if (override && override->isString()) id = override->asCString();  // deliberate: up to a NUL
    if (id.empty()) id = "0";
    event->addProperty(kId, std::move(id));
    return event;
}

}  // namespace Velo::OS::Telemetry
