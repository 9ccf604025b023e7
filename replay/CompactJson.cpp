#include "replay/CompactJson.h"

#include <json/writer.h>

#include "replay/Escape.h"

namespace Velo::OS::Telemetry::replay {

std::string toCompactJson(const Json::Value& value) {
    static const Json::StreamWriterBuilder builder = [] {
        Json::StreamWriterBuilder compact;
        compact["indentation"] = "";
        compact["emitUTF8"] = true;
        return compact;
    }();
    return escaped(Json::writeString(builder, value));
}

}  // namespace Velo::OS::Telemetry::replay
