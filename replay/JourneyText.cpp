#include "replay/JourneyText.h"

#include <vector>

#include "replay/CompactJson.h"
#include "replay/Escape.h"

namespace Velo::OS::Telemetry::replay {

namespace {

using Kind = Journey::Kind;
using Part = Journey::Part;
using Stage = Journey::Stage;

const Dropped* dropOf(const Outcome& outcome, const Stage& stage) {
    const Dropped* dropped = std::get_if<Dropped>(&outcome);
    return dropped && dropped->why["guard"] == stage.name ? dropped : nullptr;
}

/// What the stage did with the event as a whole.
std::string fateOf(const Stage& stage, const Outcome& outcome) {
    // A kept event has met every stage but those from which it is barred.
    if (!stage.entered) return std::holds_alternative<Dropped>(outcome) ? "not_reached" : "blocked";
    if (stage.kind == Kind::Monitor) return "observed";
    if (stage.kind == Kind::Applier) return "applied";
    return dropOf(outcome, stage) ? "dropped" : "passed";
}

class TextWriter {
public:
    explicit TextWriter(bool hasColour) : hasColour_(hasColour) {}

    std::string write(const Journey& journey, const Outcome& outcome) {
        headline(journey.event());
        std::vector<std::string> notReached;
        for (const Stage& stage : journey.stages()) {
            if (!stage.entered && std::holds_alternative<Dropped>(outcome)) {
                notReached.push_back(stage.name);
            } else {
                paragraph(stage, outcome);
            }
        }
        if (!notReached.empty()) {
            text_ += "  " + painted(kDim, "not reached:") + "\n";
            list(notReached, "    ");
        }
        if (const auto* kept = std::get_if<Kept>(&outcome)) text_ += "  " + painted(kGreen, "kept") + "\n" + kept->line;
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

    void paragraph(const Stage& stage, const Outcome& outcome) {
        const std::string indent = stage.within.empty() ? "  " : "    ";
        const std::string fate = fateOf(stage, outcome);
        const char* colour = fate == "dropped" ? kRed : fate == "passed" ? kGreen : kDim;
        std::string name = indent + stage.name;
        name.resize(kFateColumn, ' ');
        text_ += name + painted(colour, fate);
        if (const Dropped* drop = dropOf(outcome, stage)) {
            text_ += ": " + drop->why["reason"].asString() + "\n";
            Json::Value details = drop->why;
            for (const char* said : {"guard", "reason"}) details.removeMember(said);
            members(details, indent + "  ");
        } else {
            text_ += "\n";
        }
        for (const MonitorReport& report : stage.reports) {
            text_ += indent + "  " + painted(kCyan, "reported " + escaped(report.name)) + "\n";
            members(toJson(report)["bundle"], indent + "    ");
        }
        for (const Journey::Change& change : stage.changes) changed(change, indent + "  ");
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
        text_ += (change.part == Part::Header ? "header." : "") + escaped(change.field) + " ";
        if (change.before) text_ += shown(*change.before) + " -> ";
        text_ += shown(change.after) + "\n";
    }

    static constexpr size_t kFateColumn = 32, kWidth = 118;

    const bool hasColour_;
    std::string text_;
};

Json::Value toJson(const Stage& stage, const Outcome& outcome) {
    static constexpr const char* kKinds[] = {"monitor", "guard", "applier"};
    static constexpr const char* kParts[] = {"data", "header", "event"};
    Json::Value json;
    json["name"] = stage.name;
    json["kind"] = kKinds[static_cast<int>(stage.kind)];
    if (!stage.within.empty()) json["within"] = stage.within;
    json["fate"] = fateOf(stage, outcome);
    for (const MonitorReport& report : stage.reports) json["reports"].append(toJson(report));
    for (const Journey::Change& change : stage.changes) {
        Json::Value& changed = json["changes"].append({});
        changed["field"] = change.field;
        changed["in"] = kParts[static_cast<int>(change.part)];
        if (change.before) changed["old"] = *change.before;
        changed["new"] = change.after;
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
    for (const Stage& stage : journey.stages()) json["stages"].append(toJson(stage, outcome));
    if (const auto* dropped = std::get_if<Dropped>(&outcome)) json["dropped"] = dropped->why;
    if (const auto* unwritable = std::get_if<Unwritable>(&outcome)) json["bad"] = unwritable->reason;
    std::string line = toCompactJson(json);
    // As it stands: to read and write it again could change its numbers.
    if (const auto* kept = std::get_if<Kept>(&outcome)) {
        line.pop_back();
        line += ",\"output\":" + kept->line.substr(0, kept->line.size() - 1) + "}";
    }
    return line + "\n";
}

}  // namespace Velo::OS::Telemetry::replay
