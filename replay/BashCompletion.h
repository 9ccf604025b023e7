#pragma once

#include <string>

#include "replay/CommandTree.h"

namespace Velo::OS::Telemetry::replay {

/// A script that makes bash complete the tool's commands, their options and the names of files. It needs bash 4 and
/// nothing else.
std::string formatBashCompletion(const Command& tool);

}  // namespace Velo::OS::Telemetry::replay
