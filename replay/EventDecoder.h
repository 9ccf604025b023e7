#pragma once

#include <json/value.h>

#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "replay/FastLineReader.h"
#include "replay/StrictJson.h"
#include "telemetry/TelemetryEventBundle.h"

namespace Velo::OS::Telemetry::replay {

/// What is wrong with a line: the path of the field and the reason, "uid: expected an unsigned 32-bit integer". May
/// hold control characters of the line.
struct LineError {
    std::string text;
};

/// Turns lines of input into events. A line is one JSON object:
///
///     name      string, required
///     uid       unsigned 32-bit integer, 1000 if absent
///     data      object: the payload of a JSON event; either this or `bundle`
///     format    of a JSON event: "json" (if absent), "libtelemetry", "osndk" or "atom"
///     atom_id   signed 32-bit integer, with the format "atom" only
///     bundle    object: the payload of a bundle event, typed as `bundleFromJson` says
///     realtime  of a bundle event: bool, false if absent
///
/// Three more members are no part of the event: "//", a string, is a comment; "dropped" and "reported_at" are added by
/// the tool itself to lines that it writes.
///
/// Not to be used by two threads at once.
class EventDecoder {
public:
    using Decoded = std::variant<std::unique_ptr<TelemetryEventBundle>, LineError>;

    /// A NUL must follow the line in memory.
    Decoded decode(std::string_view line);

    /// The member "dropped" of the line decoded last, which must have been an event; null if it has none.
    const Json::Value* earlierDrop() const;

private:
    Decoded decodeCarefully(std::string_view line);

    FastLineReader fast_;
    StrictJson json_;   // for lines that it leaves
    Json::Value root_;  // such a line; null after any other
};

}  // namespace Velo::OS::Telemetry::replay
