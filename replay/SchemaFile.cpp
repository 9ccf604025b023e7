#include "replay/SchemaFile.h"

#include "replay/FileError.h"
#include "replay/JsonFile.h"

namespace Velo::OS::Telemetry::replay {

std::string readSchema(InputFile& file) { return readText(file, 64 << 20); }

void persistSchema(const std::string& text, const std::string& fileName, IEventSchemaHandler& handler,
                   StoreFile& store) {
    StoreFile::Transaction transaction(store);
    if (!handler.persistEventSchema(text)) {
        parseJson(text, fileName);  // names the place
        throw FileError(fileName + ": expected an object");
    }
    transaction.commit();
}

}  // namespace Velo::OS::Telemetry::replay
