#include "replay/JourneyText.h"

#include <vector>

#include "replay/CompactJson.h"
#include "replay/Escape.h"

namespace Velo::OS::Telemetry::replay {

namespace {

using Kind = Journey::Kind;
using Stage = Journey::Stage;

const Dropped* dropOf(const Outcome& outcome, const Stage& stage) {
    const Dropped* dropped = std::get_if<Dropped>(&outcome);
    return dropped && dropped->why["guard"] == stage.name ? dropped : nullptr;
}

/// What the stage did with the event as a whole.
enum class Fate { Observed, Passed, Applied, Dropped, Failed, Blocked, NotReached };

constexpr const char* kFates[] = {"observed", "passed", "applied", "dropped", "failed", "blocked", "not_reached"};

Fate fateOf(const Journey& journey, const Stage& stage, const Outcome& outcome) {
    const bool wasCutShort = std::holds_alternative<Dropped>(outcome) || std::holds_alternative<Failed>(outcome);
    if (!stage.entered) return wasCutShort ? Fate::NotReached : Fate::Blocked;
    if (std::holds_alternative<Failed>(outcome) && &stage == &journey.current()) return Fate::Failed;
    if (stage.kind == Kind::Monitor) return Fate::Observed;
    if (stage.kind == Kind::Applier) return Fate::Applied;
    return dropOf(outcome, stage) ? Fate::Dropped : Fate::Passed;
}

class TextWriter {
public:
    explicit TextWriter(bool hasColour) : hasColour_(hasColour) {}

    std::string write(const Journey& journey, const Outcome& outcome) {
        headline(journey.event());
        std::vector<std::string> notReached;
        for (const Stage& stage : journey.stages()) {
            const Fate fate = fateOf(journey, stage, outcome);
            fate == Fate::NotReached ? notReached.push_back(stage.name) : paragraph(journey, stage, fate, outcome);
        }
        if (!notReached.empty()) {
            text_ += "  " + painted(kDim, "not reached:") + "\n";
            list(notReached, "    ");
        }
        if (const auto* kept = std::get_if<Kept>(&outcome)) {
            text_ += "  " + painted(kGreen, "kept") + "\n";
            text_ += kept->line;
        }
        if (const auto* unwritable = std::get_if<Unwritable>(&outcome)) {
            text_ += "  " + painted(kRed, "bad: ") + unwritable->reason + "\n";
        }
        return std::move(text_) + "\n";
    }

private:
    static constexpr char kBold[] = "1", kDim[] = "2", kRed[] = "31", kGreen[] = "32", kYellow[] = "33", kCyan[] = "36";

    std::string painted(const char* colour, const std::string& text) const {
        return hasColour_ ? std::string("\x1B[") + colour + "m" + text + "\x1B[0m" : text;
    }

    static std::string shown(const Json::Value& value) { return escaped(toCompactJson(value)); }

    void headline(const Journey::Event& event) {
        text_ += painted(kBold, escaped(event.name)) + "  ";
        text_ += event.isReport ? "reported about " : "";
        text_ += escaped(toText(event.place)) + ", uid " + std::to_string(event.uid) + ", " + event.format;
        if (event.identifier != event.name) text_ += ", identifier " + escaped(event.identifier);
        text_ += "\n";
    }

    void paragraph(const Journey& journey, const Stage& stage, Fate fate, const Outcome& outcome) {
        const std::string indent = stage.within.empty() ? "  " : "    ";
        const bool isLost = fate == Fate::Dropped || fate == Fate::Failed;
        const char* colour = isLost ? kRed : fate == Fate::Passed ? kGreen : kDim;
        std::string name = indent + stage.name;
        name.resize(kFateColumn, ' ');
        text_ += name + painted(colour, kFates[static_cast<int>(fate)]);
        if (fate == Fate::Failed) text_ += ": " + escaped(std::get<Failed>(outcome).reason);
        const Dropped* drop = dropOf(outcome, stage);
        if (drop) text_ += ": " + drop->why["reason"].asString();
        text_ += "\n";
        for (const auto& step : stage.steps) {
            if (const auto* report = std::get_if<MonitorReport>(&step)) {
                reported(*report, journey.event().uid, indent + "  ");
            } else {
                changed(std::get<Journey::Change>(step), indent + "  ");
            }
        }
        if (!drop) return;
        Json::Value details = drop->why;
        for (const char* said : {"guard", "reason"}) details.removeMember(said);
        text_ += indent + "  because\n";
        members(details, indent + "    ");
    }

    void reported(const MonitorReport& report, uint32_t eventUid, const std::string& indent) {
        text_ += indent + painted(kCyan, "reported " + escaped(report.name));
        if (report.uid != eventUid) text_ += ", uid " + std::to_string(report.uid);
        text_ += "\n";
        members(toJson(report)["bundle"], indent + "  ");
    }

    void members(const Json::Value& object, const std::string& indent) {
        std::vector<std::string> items;
        for (auto member = object.begin(); member != object.end(); ++member) {
            items.push_back(escaped(member.name()) + " " + shown(*member));
        }
        list(items, indent);
    }

    /// As many to a line as fit.
    void list(const std::vector<std::string>& items, const std::string& indent) {
        size_t column = 0;
        for (const std::string& item : items) {
            const bool fits = column > 0 && column + 2 + item.size() <= kWidth;
            if (column > 0) text_ += fits ? ", " : ",\n";
            text_ += fits ? item : indent + item;
            column = (fits ? column + 2 : indent.size()) + item.size();
        }
        text_ += "\n";
    }

    void changed(const Journey::Change& change, const std::string& indent) {
        text_ += indent + (change.before ? painted(kYellow, "~ ") : painted(kGreen, "+ "));
        text_ += kPrefixes[static_cast<int>(change.part)] + escaped(change.field) + " ";
        if (change.before) text_ += shown(*change.before) + " -> ";
        text_ += shown(change.after) + "\n";
    }

    static constexpr const char* kPrefixes[] = {"", "header.", "event."};
    static constexpr size_t kFateColumn = 32, kWidth = 118;

    const bool hasColour_;
    std::string text_;
};

Json::Value toJson(const Journey::Change& change) {
    static constexpr const char* kParts[] = {"data", "header", "event"};
    Json::Value json;
    json["field"] = change.field;
    json["in"] = kParts[static_cast<int>(change.part)];
    if (change.before) json["old"] = *change.before;
    json["new"] = change.after;
    return json;
}

Json::Value toJson(const Journey& journey, const Stage& stage, const Outcome& outcome) {
    Json::Value json;
    json["name"] = stage.name;
    json["kind"] = nameOf(stage.kind);
    if (!stage.within.empty()) json["within"] = stage.within;
    json["fate"] = kFates[static_cast<int>(fateOf(journey, stage, outcome))];
    for (const auto& step : stage.steps) {
        const bool isReport = std::holds_alternative<MonitorReport>(step);
        json[isReport ? "reports" : "changes"].append(std::visit([](const auto& what) { return toJson(what); }, step));
    }
    return json;
}

}  // namespace

std::string toText(const Journey& journey, const Outcome& outcome, bool hasColour) {
    return TextWriter(hasColour).write(journey, outcome);
}

std::string toJsonLine(const Journey& journey, const Outcome& outcome) {
    const Journey::Event& event = journey.event();
    Json::Value json;
    json[event.isReport ? "reported_at" : "place"] = escaped(toText(event.place));
    json["name"] = event.name;
    json["uid"] = event.uid;
    json["format"] = event.format;
    json["identifier"] = event.identifier;
    for (const Stage& stage : journey.stages()) json["stages"].append(toJson(journey, stage, outcome));
    json["data"] = journey.data();
    if (const auto* dropped = std::get_if<Dropped>(&outcome)) json["dropped"] = dropped->why;
    if (const auto* failed = std::get_if<Failed>(&outcome)) json["bad"] = failed->reason;
    if (const auto* unwritable = std::get_if<Unwritable>(&outcome)) json["bad"] = unwritable->reason;
    std::string line = toCompactJson(json);
    // As it stands: to read and write it again could change its numbers.
    if (const auto* kept = std::get_if<Kept>(&outcome)) {
        line.pop_back();
        line += ",\"output\":";
        line += kept->line.substr(0, kept->line.size() - 1);
        line += "}";
    }
    return line + "\n";
}

}  // namespace Velo::OS::Telemetry::replay
