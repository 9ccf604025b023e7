#include "replay/JourneyStart.h"

#include <utility>

#include "replay/LibraryLog.h"

namespace Velo::OS::Telemetry::replay {

std::unique_ptr<Journey> JourneyStart::begin(const LinePlace& place, bool isReport, const TelemetryEvent& event,
                                             std::string_view line, const std::vector<Journey::Stage>& stages) {
    // Shows what the event is like. To have the event itself converted to JSON would change what the stages see. What
    // the library has to say of it, it says again when the event is processed.
    LibraryLog::Messages ignored;
    const LibraryLog::Listening listening(ignored);
    EventDecoder::Decoded decoded = decoder_.decode(line);
    const auto* twin = std::get_if<std::unique_ptr<TelemetryEventBundle>>(&decoded);
    if (!twin) return nullptr;
    Json::Value data = (*twin)->getJsonValue();
    return std::make_unique<Journey>(
        Journey::Event{place, isReport, event.name(), event.uid(), getFormatName(event.getIntakeFormat()),
                       (*twin)->getStringIdentifier()},
        std::move(data), stages);
}

}  // namespace Velo::OS::Telemetry::replay
