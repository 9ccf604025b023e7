#include "telemetry/SessionsApplier.h"

#include <unordered_set>
#include <utility>

#include "appliers/EventOrigin.h"
#include "appliers/SessionExemptEvents.h"
#include "conversion/Immortal.h"

namespace Velo::OS::Telemetry {

namespace {

const std::string& kSessions = immortal<std::string>("__sessions");
const std::string& kSessionsV2 = immortal<std::string>("__sessions_v2");

const auto& exemptEvents = []() -> auto& {
    auto& names = immortal<std::unordered_set<std::string>>();
    for (const std::string_view name : kSessionExemptEvents) names.emplace(name);
    return names;
}
();

}  // namespace

SessionsApplier::SessionsApplier(std::shared_ptr<ISessionManager> sessionManager)
    : IApplier("sessions_applier"), sessionManager_(std::move(sessionManager)) {}

EventResult SessionsApplier::apply(std::unique_ptr<TelemetryEvent> event) {
    // Deliberate: asked for every event, even for one that has a context of its own.
    const std::string context = sessionManager_->getSessionsV2(creationTimeNs(*event));
    if (event->sessionsV2().empty()) event->addString(kSessionsV2, context);

    if (sessionManager_->shouldAttachSessionsToAllEvents() || exemptEvents.count(event->name()) > 0) {
        Json::Value sessions = sessionManager_->getSessions(androidUserId(*event));
        if (!sessions.isNull()) event->addJson(kSessions, std::move(sessions));
    }
    return event;
}

}  // namespace Velo::OS::Telemetry
