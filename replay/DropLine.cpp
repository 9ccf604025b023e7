#include "replay/DropLine.h"

#include "replay/CompactJson.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// Cuts the member out of the object, with one of the commas beside it. Every line has another member, its name.
void eraseMember(std::string& object, const Json::Value& member) {
    const auto valueStart = static_cast<size_t>(member.getOffsetStart());
    auto end = static_cast<size_t>(member.getOffsetLimit());
    // No quote stands within its name, however that is escaped.
    const size_t nameEnd = object.rfind('"', valueStart - 1);
    size_t start = object.rfind('"', nameEnd - 1);
    const size_t before = object.find_last_not_of(" \t\r", start - 1);
    if (object[before] == ',') {
        start = before;
    } else {
        end = object.find(',', end) + 1;
    }
    object.erase(start, end - start);
}

}  // namespace

std::string dropLine(std::string_view line, const Json::Value* earlier, const Json::Value& dropped) {
    const size_t end = line.rfind('}');
    std::string text(line.substr(0, end));
    if (earlier) eraseMember(text, *earlier);
    text += ",\"dropped\":";
    text += toCompactJson(dropped);
    text += line.substr(end);
    text += '\n';
    return text;
}

}  // namespace Velo::OS::Telemetry::replay
