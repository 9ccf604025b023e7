#include "replay/DeskDevice.h"

#include <utility>

#include "replay/DeviceFile.h"
#include "replay/SchemaCheck.h"
#include "replay/SchemaFile.h"
#include "replay/StoredKeyValues.h"
#include "telemetry/EventSchemaHandler.h"

namespace Velo::OS::Telemetry::replay {

namespace {

std::shared_ptr<EventSchemaHandler> schemaIn(StoreFile& store) {
    return std::make_shared<EventSchemaHandler>(std::make_shared<StoredKeyValues>(store));
}

/// Devices are silent about most of them: events are just dropped.
void warnOfProblems(const std::string& text, const std::string& fileName, Console& console) {
    const SchemaReport report = checkSchema(text);
    if (report.problems.empty()) return;
    const SchemaReport::Problem& first = report.problems.front();
    console.warning({fileName, first.line}, first.text + "; `telemetry-replay schema check` finds " +
                                                std::to_string(report.problemCount) +
                                                (report.problemCount == 1 ? " problem" : " problems"));
}

}  // namespace

DeskDevice::DeskDevice(RunFiles& files, const std::optional<std::string>& storePath, Console& console) {
    Device device = files.device ? readDevice(*files.device) : Device();
    StoreFile& store = store_.emplace(storePath);
    sequenceNumbers_ = std::make_shared<StoredSequenceNumbers>(store);
    auto schema = schemaIn(store);
    if (files.schema) {
        const std::string text = readSchema(*files.schema);
        persistSchema(text, files.schema->name(), *schema, store);
        warnOfProblems(text, files.schema->name(), console);
    }
    // In place of no schema at all, about which the library would complain at every name.
    if (!schema->isEventSchemaAvailable()) {
        if (device.filter.enabled) console.warning("no event schema: all events are UNCATEGORIZED");
        schema = schemaIn(emptyStore_.emplace(std::nullopt));
        schema->persistEventSchema(R"({"salt":"none"})");
    }
    pipeline_.emplace(std::move(device), sequenceNumbers_, schema);
}

}  // namespace Velo::OS::Telemetry::replay
