#pragma once

#include <vector>

#include "replay/Device.h"
#include "replay/InputFile.h"
#include "replay/JsonNode.h"

namespace Velo::OS::Telemetry::replay {

/// Reads the description of a device, one JSON object with the members that the tool's help lists. Each may be absent.
/// Throws `FileError` with the path of the member that is wrong, "FILE:LINE: identities.10123: expected a string".
Device readDevice(InputFile& file);

/// Every value of the device that the file describes, be it there or a default; without a file all are defaults. Throws
/// `FileError` where `readDevice` does.
std::vector<ReadValue> listDevice(InputFile* file);

}  // namespace Velo::OS::Telemetry::replay
