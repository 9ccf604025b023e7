#include "replay/OutputLine.h"

#include <json/writer.h>

#include <cstring>

namespace Velo::OS::Telemetry::replay {

namespace {

/// jsoncpp quotes up to a NUL, so a text with NULs in it is quoted piece by piece.
void appendQuoted(std::string& out, const std::string& text) {
    out += '"';
    for (size_t start = 0; start <= text.size();) {
        const char* piece = text.c_str() + start;
        const std::string quoted = Json::valueToQuotedString(piece);
        out.append(quoted, 1, quoted.size() - 2);
        start += std::strlen(piece) + 1;
        if (start <= text.size()) out += "\\u0000";
    }
    out += '"';
}

}  // namespace

bool appendOutputLine(TelemetryEvent& event, std::string& text) {
    const std::string& data = event.getJsonString();
    if (data.empty()) return false;

    text += "{\"name\":";
    appendQuoted(text, event.name());
    text += ",\"uid\":";
    text += std::to_string(event.uid());
    text += ",\"identifier\":";
    appendQuoted(text, event.getStringIdentifier());
    text += ",\"data\":";
    text += data;
    text += ",\"header\":";
    text += event.getJsonBatchHeaderString();
    text += "}\n";
    return true;
}

}  // namespace Velo::OS::Telemetry::replay
