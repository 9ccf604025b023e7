#pragma once

#include <memory>
#include <optional>

#include "fuzz/Answers.h"
#include "telemetry/TelemetrySorelconfigs.h"
#include "tests/fakes/FakeGuardServices.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTelemetrySettings.h"

namespace Velo::OS::Telemetry::fuzz {

/// Everything that is injected, its answers chosen before each event.
struct Services {
    std::shared_ptr<fakes::FakeTelemetrySettings> settings = fakes::FakeTelemetrySettings::install();
    std::shared_ptr<fakes::FakeGuardServices> guards = std::make_shared<fakes::FakeGuardServices>();
    std::shared_ptr<fakes::FakeServices> appliers = std::make_shared<fakes::FakeServices>();
};

inline void answer(Answers& answers, fakes::FakeTelemetrySettings& settings) {
    settings.openGate = TelemetrySorelconfigs::EnableIntakeMonitor;
    settings.enabled = !answers.truth();
    settings.verbose = answers.truth();
    settings.inVerification = answers.truth();
    settings.clockAdjusted = answers.truth();
    settings.accountMode = answers.truth();
    settings.clockAdjustmentMs = answers.number();
    settings.managedMode = static_cast<int32_t>(answers.number());
    settings.telemetryDeviceId = answers.truth() ? std::nullopt : std::optional(answers.text());
    settings.morlekDeviceId = answers.text();
}

inline void answer(Answers& answers, const TelemetryEvent& event, fakes::FakeGuardServices& guards) {
    guards.rateLimit = {answers.number(), answers.number(), answers.number()};
    guards.checkpointed = {answers.truth() ? event.uid() : 0};
    guards.unwanted = {answers.truth() ? event.name() : ""};
    guards.refused = {answers.truth() ? event.name() : ""};
    guards.sampleRate = answers.rate();
    guards.configId = answers.text();
    guards.logs = {{{{{answers.text(), answers.number()}}, answers.text(), answers.number()}},
                   {{answers.text(), answers.text(), {{answers.text(), answers.number()}}, answers.number()}}};
    guards.fetches = {{answers.text(), answers.text(), answers.number(), FetchOutcome{answers.truth() ? 9 : 1}}};
    guards.filters = answers.truth();
    guards.consents = answers.truth();
    for (bool& fact : guards.facts) fact = answers.truth();
    guards.schemaTimestamp = static_cast<uint64_t>(answers.number());
}

inline void answer(Answers& answers, fakes::FakeServices& appliers) {
    appliers.userId = answers.text();
    appliers.package = {answers.text(), answers.number(), answers.text()};
    appliers.foreground = {answers.text(), answers.number(), answers.text()};
    appliers.global = static_cast<uint64_t>(answers.number());
    appliers.perType = static_cast<uint64_t>(answers.number());
    appliers.attachToAll = answers.truth();
    appliers.sessions = answers.json();
    appliers.sessionsV2 = answers.text();
    appliers.overrides.clear();
    for (const char* key : {"id", "sdk_app_package_version_name", "sdk_app_package_version_code"}) {
        if (answers.truth()) appliers.overrides[key] = answers.json();
    }
}

}  // namespace Velo::OS::Telemetry::fuzz
