#pragma once

#include <json/value.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "replay/LinePlace.h"
#include "replay/MonitorReport.h"

namespace Velo::OS::Telemetry::replay {

/// What an event was when it came, and what each stage did about it.
class Journey {
public:
    enum class Kind { Monitor, Guard, Applier };

    /// What of an event can change: its data, its batch header, and itself, which is its uid.
    enum class Part { Data, Header, Event };

    struct Change {
        Part part = Part::Data;
        std::string field;
        std::optional<Json::Value> before;  // none: it is new
        Json::Value after;
    };

    struct Stage {
        Kind kind = Kind::Monitor;
        std::string name;
        std::string within;  // the stage that ran this one; empty: the pipeline did
        bool entered = false;
        std::vector<MonitorReport> reports;
        std::vector<Change> changes;
    };

    struct Event {
        LinePlace place;
        bool isReport = false;  // about what stands there
        std::string name;
        uint32_t uid = 0;
        std::string format;
        std::string identifier;
    };

    /// Of an event with this data through these stages, none of which it has entered.
    Journey(Event event, Json::Value data, std::vector<Stage> stages);

    const Event& event() const { return event_; }
    const std::vector<Stage>& stages() const { return stages_; }

    void enter(const std::string& stage);
    /// The stage that was entered last has another one work on the event.
    void enterWithin(const std::string& stage);

    // What the stage that was entered last does.
    void report(const MonitorReport& report);
    void set(Part part, const std::string& field, Json::Value value);

private:
    Event event_;
    std::array<Json::Value, 3> parts_;  // so far
    std::vector<Stage> stages_;
    size_t current_ = 0;  // stage
};

}  // namespace Velo::OS::Telemetry::replay
