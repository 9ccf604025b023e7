#pragma once

#include <json/value.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
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
        std::vector<std::variant<MonitorReport, Change>> steps;
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
    /// As it was before the first stage.
    const Json::Value& data() const { return data_; }
    const std::vector<Stage>& stages() const { return stages_; }
    /// The one that was entered last.
    const Stage& current() const { return stages_[current_]; }

    /// The event enters the next of the stages.
    void enter(const std::string& stage);
    /// The current stage has another one, which is none of them, work on the event: the current one from now on.
    void enterWithin(const std::string& stage);

    // What the current stage does.
    void report(const MonitorReport& report);
    void set(Part part, const std::string& field, Json::Value value);

private:
    Event event_;
    Json::Value data_;
    std::array<Json::Value, 3> parts_;  // so far
    std::vector<Stage> stages_;
    size_t current_ = 0;
};

/// "monitor", "guard" or "applier".
const char* nameOf(Journey::Kind kind);

}  // namespace Velo::OS::Telemetry::replay
