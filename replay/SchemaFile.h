#pragma once

#include <string>

#include "replay/InputFile.h"
#include "replay/StoreFile.h"
#include "telemetry/IEventSchemaHandler.h"

namespace Velo::OS::Telemetry::replay {

/// The text of an event schema. Throws `FileError`, also if it is longer than 64 MiB.
std::string readSchema(InputFile& file);

/// Has the handler, which keeps it in the store, replace the schema: wholly, or not at all even if the process is
/// killed. Throws `FileError` if the text is none.
void persistSchema(const std::string& text, const std::string& fileName, IEventSchemaHandler& handler,
                   StoreFile& store);

}  // namespace Velo::OS::Telemetry::replay
