#pragma once

#include "replay/Device.h"
#include "replay/InputFile.h"

namespace Velo::OS::Telemetry::replay {

/// Reads the description of a device, one JSON object with the members that the tool's help lists. Each may be absent.
/// Throws `FileError` with the path of the member that is wrong, "FILE: identities.10123: expected a string".
Device readDevice(InputFile& file);

}  // namespace Velo::OS::Telemetry::replay
