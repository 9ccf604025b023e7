#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "replay/Device.h"
#include "replay/DeviceServices.h"
#include "replay/Journey.h"
#include "replay/MonitorReport.h"
#include "replay/PipelineWatch.h"
#include "telemetry/IEventSchemaHandler.h"
#include "telemetry/IGuard.h"
#include "telemetry/SequenceNumberManager.h"
#include "telemetry/TelemetryEventProcessor.h"

namespace Velo::OS::Telemetry::replay {

/// The pipeline as the service builds it, on a device. For one thread at a time.
class DevicePipeline {
public:
    /// Sets the settings and the system properties of the process, and the library keeps what it has once read of them:
    /// one device in the life of a process.
    DevicePipeline(Device device, std::shared_ptr<SequenceNumberManager> sequenceNumbers,
                   std::shared_ptr<IEventSchemaHandler> schema);
    DevicePipeline(const DevicePipeline&) = delete;
    DevicePipeline& operator=(const DevicePipeline&) = delete;

    /// The device is as it was when the event was created. The journey, which is lent, is told of every step.
    EventResult processEvent(std::unique_ptr<TelemetryEventBundle> event, Journey* journey = nullptr);

    /// Why the last event was dropped: "guard", "counter" (null if the guard has none), "reason" and what the decision
    /// rested on. Null if it was not.
    Json::Value explainDrop() const;
    /// When the last event was created.
    const EventTimes& eventTimes() const { return times_; }
    /// What the stages have reported since the last call.
    std::vector<MonitorReport> takeReports();

    /// How many events each guard has dropped, in the order in which they run.
    std::vector<std::pair<std::string, uint64_t>> drops() const;
    /// All stages that the pipeline itself runs, in order, as they are before a journey.
    const std::vector<Journey::Stage>& stages() const { return stages_; }
    std::map<std::string, uint64_t> counters() const { return watch_->counters(); }

    /// From now on takes the time of each stage, which costs some.
    void timeStages() { watch_->timeStages(stages_); }
    /// Of all stages that the pipeline itself runs, in order; empty if it was not asked to take it.
    std::vector<StageTime> stageTimes() const { return watch_->stageTimes(); }
    /// Of the device.
    const Device::Clock& clock() const { return services_->device().clock; }

private:
    struct Guard {
        std::shared_ptr<IGuard> guard;
        std::function<void(Json::Value&)> explain;
        uint64_t dropped = 0;
    };

    void makeGuards(const MonitorEventCallback& report, std::shared_ptr<IEventSchemaHandler> schema);
    void keepReport(const android::os::PersistableBundle& envelope, unsigned int uid);
    /// Leaves out the event's identifier where it is the name, which the line has.
    void omitName(Json::Value& why) const;

    const std::shared_ptr<DeviceServices> services_;
    const std::shared_ptr<PipelineWatch> watch_ = std::make_shared<PipelineWatch>();
    EventTimes times_;  // of the event in hand
    std::vector<MonitorReport> reports_;
    std::vector<Guard> guards_;
    Guard* droppedBy_ = nullptr;  // the last event
    std::vector<Journey::Stage> stages_;
    std::shared_ptr<TelemetryEventProcessor> processor_;
};

}  // namespace Velo::OS::Telemetry::replay
