#include "replay/EventDecoder.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "replay/BundleFromJson.h"
#include "replay/Suggestion.h"
#include "telemetry/IntakeFormat.h"

namespace Velo::OS::Telemetry::replay {

namespace {

using MaybeError = std::optional<LineError>;

/// The members of a line; null for one that is absent.
struct Fields {
    Json::Value* name = nullptr;
    Json::Value* uid = nullptr;
    Json::Value* realtime = nullptr;
    Json::Value* format = nullptr;
    Json::Value* atomId = nullptr;
    Json::Value* data = nullptr;
    Json::Value* bundle = nullptr;
};

constexpr std::pair<std::string_view, Json::Value * Fields::*> kFields[] = {
    {"name", &Fields::name},      {"uid", &Fields::uid},   {"realtime", &Fields::realtime}, {"format", &Fields::format},
    {"atom_id", &Fields::atomId}, {"data", &Fields::data}, {"bundle", &Fields::bundle},
};

constexpr std::string_view kComment = "//", kDropped = "dropped", kReportedAt = "reported_at";

constexpr uint32_t kDefaultUid = 1000;  // the system's own

LineError unknownMember(const std::string& name) {
    std::vector<std::string_view> known;
    for (const auto& [field, pointer] : kFields) known.push_back(field);
    return LineError{name + ": unknown member" + didYouMean(name, known)};
}

LineError unknownFormat(const std::string& format) {
    constexpr std::string_view kFormats[] = {"json", "libtelemetry", "osndk", "atom"};
    return LineError{"format: expected " + listed(kFormats, "\"") + didYouMean(format, kFormats)};
}

MaybeError findFields(Json::Value& line, Fields& fields) {
    for (auto member = line.begin(); member != line.end(); ++member) {
        const std::string name = member.name();
        if (name == kComment) {
            if (!member->isString()) return LineError{name + ": expected a string"};
            continue;
        }
        if (name == kDropped || name == kReportedAt) continue;
        Json::Value* Fields::*field = nullptr;
        for (const auto& [known, pointer] : kFields) {
            if (name == known) field = pointer;
        }
        if (field == nullptr) return unknownMember(name);
        fields.*field = &*member;
    }
    return std::nullopt;
}

MaybeError checkTypes(const Fields& fields) {
    if (fields.name == nullptr) return LineError{"name: missing"};
    if (!fields.name->isString()) return LineError{"name: expected a string"};
    if (fields.uid && !(isIntegerLiteral(*fields.uid) && fields.uid->isUInt())) {
        return LineError{"uid: expected an unsigned 32-bit integer"};
    }
    if (fields.realtime && !fields.realtime->isBool()) return LineError{"realtime: expected true or false"};
    if (fields.format && !fields.format->isString()) return LineError{"format: expected a string"};
    if (fields.atomId && !(isIntegerLiteral(*fields.atomId) && fields.atomId->isInt())) {
        return LineError{"atom_id: expected a signed 32-bit integer"};
    }
    if (fields.data && !fields.data->isObject()) return LineError{"data: expected an object"};
    if (fields.bundle && !fields.bundle->isObject()) return LineError{"bundle: expected an object"};
    return std::nullopt;
}

LineMembers takeMembers(Fields& fields) {
    LineMembers members;
    members.name = fields.name->asString();
    if (fields.uid) members.uid = fields.uid->asUInt();
    if (fields.realtime) members.realtime = fields.realtime->asBool();
    if (fields.format) members.format = fields.format->asString();
    if (fields.atomId) members.atomId = fields.atomId->asInt();
    if (fields.data) members.data = std::move(*fields.data);
    if (fields.bundle) members.bundle = std::move(*fields.bundle);
    return members;
}

/// Which members go together.
MaybeError checkTogether(const LineMembers& members) {
    const std::string_view format = members.format ? std::string_view(*members.format) : "json";
    if (members.data && members.bundle) return LineError{"bundle: cannot be given together with data"};
    if (!members.data && !members.bundle) return LineError{"data: missing, and there is no bundle either"};
    if (members.data && members.realtime) return LineError{"realtime: only a bundle event has it"};
    if (members.bundle && format != "json") {
        return LineError{"format: a bundle event names its pathway in bundle.utl_logging_pathway"};
    }
    if (format == "atom" && !members.atomId) return LineError{"atom_id: missing, the format \"atom\" needs it"};
    if (format != "atom" && members.atomId) return LineError{"atom_id: only the format \"atom\" has it"};
    return std::nullopt;
}

std::optional<IntakeFormat> intakeFormat(const LineMembers& members) {
    if (members.atomId) return getAtomIntakeFormat(*members.atomId);
    if (!members.format || *members.format == "json") return IntakeFormat::JsonBundle;
    return getIntakeFormatFromLoggingPathway(*members.format);
}

EventDecoder::Decoded makeEvent(LineMembers& members, std::string_view line) {
    if (MaybeError error = checkTogether(members)) return *std::move(error);
    const uint32_t uid = members.uid.value_or(kDefaultUid);
    if (members.data) {
        const std::optional<IntakeFormat> format = intakeFormat(members);
        if (!format) return unknownFormat(*members.format);
        return std::make_unique<TelemetryEventBundle>(*members.name, *std::move(members.data), uid, *format);
    }
    android::os::PersistableBundle bundle;
    if (auto fault = bundleFromJson(*members.bundle, line, "bundle", bundle)) return LineError{std::move(*fault)};
    return std::make_unique<TelemetryEventBundle>(*members.name, uid, members.realtime.value_or(false), bundle);
}

}  // namespace

EventDecoder::Decoded EventDecoder::decode(std::string_view line) {
    if (!root_.isNull()) root_ = Json::Value();
    if (auto members = fast_.read(line)) return makeEvent(*members, line);
    return decodeCarefully(line);
}

EventDecoder::Decoded EventDecoder::decodeCarefully(std::string_view line) {
    if (auto fault = json_.parse(line, root_)) return LineError{std::move(fault->text)};
    if (!root_.isObject()) return LineError{"expected an object"};

    Fields fields;
    if (MaybeError error = findFields(root_, fields)) return *std::move(error);
    if (MaybeError error = checkTypes(fields)) return *std::move(error);
    LineMembers members = takeMembers(fields);
    return makeEvent(members, line);
}

const Json::Value* EventDecoder::earlierDrop() const {
    return root_.find(kDropped.data(), kDropped.data() + kDropped.size());
}

}  // namespace Velo::OS::Telemetry::replay
