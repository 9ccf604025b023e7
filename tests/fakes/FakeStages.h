#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "telemetry/IApplier.h"
#include "telemetry/IEventTracingManager.h"
#include "telemetry/IGuard.h"
#include "telemetry/IHealthCountersManager.h"
#include "telemetry/IMonitor.h"

namespace Velo::OS::Telemetry::fakes {

/// What the fakes saw, in order.
using Calls = std::shared_ptr<std::vector<std::string>>;

/// What fakes fail with.
inline const std::error_code kFakeError = std::make_error_code(std::io_errc::stream);

/// Passes the event on, unless its name says otherwise: "name!" returns an error, "name?" nothing.
template <typename Stage>
class FakeStage : public Stage {
public:
    template <typename... Callback>
    FakeStage(Calls calls, std::string name, Callback... callback)
        : Stage(std::move(name), callback...), calls_(std::move(calls)) {}

protected:
    EventResult run(std::unique_ptr<TelemetryEvent> event) {
        calls_->push_back("run " + this->name_);
        if (this->name_.ends_with('?')) return {};
        return this->name_.ends_with('!') ? EventResult(kFakeError) : EventResult(std::move(event));
    }

private:
    Calls calls_;
};

struct FakeMonitor : FakeStage<IMonitor> {
    FakeMonitor(const Calls& calls, const std::string& name) : FakeStage(calls, name, nullptr) {}
    std::unique_ptr<TelemetryEvent> monitor(std::unique_ptr<TelemetryEvent> event) override {
        return run(std::move(event)).takeValue();
    }
};

struct FakeGuard : FakeStage<IGuard> {
    FakeGuard(const Calls& calls, const std::string& name) : FakeStage(calls, name, nullptr) {}
    EventResult handle(std::unique_ptr<TelemetryEvent> event) override { return run(std::move(event)); }
};

struct FakeApplier : FakeStage<IApplier> {
    using FakeStage::FakeStage;
    EventResult apply(std::unique_ptr<TelemetryEvent> event) override { return run(std::move(event)); }
};

/// Both managers of the processor. Threads may share it.
class FakeManagers : public IEventTracingManager, public IHealthCountersManager {
public:
    explicit FakeManagers(Calls calls) : calls_(std::move(calls)) {}
    void traceEventStage(const std::string& identifier, uint32_t uid, const std::string& stage) override {
        called("trace " + identifier + " " + std::to_string(uid) + " " + stage);
    }
    void incrementCounter(const std::string& name, int32_t amount) override {
        called("count " + name + " " + std::to_string(amount));
    }
    void incrementEventCounter(const std::string& name, const TelemetryEvent& event, int32_t amount) override {
        called("count " + name + " " + std::to_string(amount) + " of " + event.name());
    }
    std::vector<std::string> take() { return std::exchange(*calls_, {}); }

protected:
    void called(std::string call) {
        const std::lock_guard<std::mutex> lock(mutex_);
        calls_->push_back(std::move(call));
    }

private:
    Calls calls_;
    std::mutex mutex_;
};

}  // namespace Velo::OS::Telemetry::fakes
