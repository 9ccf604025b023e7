#include "replay/JsonFile.h"

#include <algorithm>
#include <utility>

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

JsonFile::JsonFile(InputFile& file) : JsonFile(file.name(), readText(file, kMaxBytes)) {}

JsonFile::JsonFile(std::string name, const std::string& text) : name_(std::move(name)), root_(parseJson(text, name_)) {
    for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
        newlines_.push_back(static_cast<std::ptrdiff_t>(at));
    }
}

size_t JsonFile::lineOf(const Json::Value& value) const {
    const auto after = std::lower_bound(newlines_.begin(), newlines_.end(), value.getOffsetStart());
    return static_cast<size_t>(after - newlines_.begin()) + 1;
}

}  // namespace Velo::OS::Telemetry::replay
