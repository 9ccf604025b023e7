#include "replay/JsonFile.h"

#include "replay/FileError.h"
#include "replay/StrictJson.h"

namespace Velo::OS::Telemetry::replay {

std::string readText(InputFile& file, size_t maxBytes) {
    std::string text;
    char part[65536];
    while (const size_t count = file.read(part, sizeof(part))) {
        text.append(part, count);
        if (text.size() > maxBytes) {
            throw FileError(file.name() + ": longer than " + std::to_string(maxBytes) + " bytes");
        }
    }
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    return text;
}

Json::Value parseJson(const std::string& text, const std::string& fileName) {
    Json::Value root;
    if (const auto fault = StrictJson().parse(text, root)) {
        throw FileError(fileName + ":" + std::to_string(fault->line) + ": " + fault->text);
    }
    return root;
}

}  // namespace Velo::OS::Telemetry::replay
