#pragma once

#include <string>
#include <vector>

#include "replay/ExitStatus.h"

namespace Velo::OS::Telemetry::replay {

/// `telemetry-replay schema check`: says on standard error what is wrong with the schema, on standard output how many
/// entries each category has.
ExitStatus checkSchemaCommand(const std::string& file);

/// `telemetry-replay schema lookup`: says on standard output how the schema classifies each event name.
ExitStatus lookUpSchemaCommand(const std::string& file, const std::vector<std::string>& names);

}  // namespace Velo::OS::Telemetry::replay
