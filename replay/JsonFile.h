#pragma once

#include <json/value.h>

#include <cstddef>
#include <string>

#include "replay/InputFile.h"

namespace Velo::OS::Telemetry::replay {

/// The rest of the file without a byte order mark. Throws `FileError`, also if that is longer than `maxBytes`.
std::string readText(InputFile& file, size_t maxBytes);

/// The value of a text that was read from the file. Throws `FileError`, "FILE:LINE: not JSON: column 3: ...".
Json::Value parseJson(const std::string& text, const std::string& fileName);

}  // namespace Velo::OS::Telemetry::replay
