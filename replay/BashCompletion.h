#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Velo::OS::Telemetry::replay {

/// A script that makes bash complete the tool's commands, their options and the names of files. It needs bash 4 and
/// nothing else.
std::string formatBashCompletion(const CLI::App& tool);

}  // namespace Velo::OS::Telemetry::replay
