#pragma once

#include <string>

#include "replay/ExitStatus.h"

namespace Velo::OS::Telemetry::replay {

/// `telemetry-replay init`: writes commented files to start from into the directory: device.json, schema.json and
/// events.jsonl. Creates the directory, and those above it, if there is none. Overwrites nothing: if one of the files
/// exists, none is left. Says on standard output what it wrote and which commands to try on it.
ExitStatus initCommand(const std::string& directory);

}  // namespace Velo::OS::Telemetry::replay
