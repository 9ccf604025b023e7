#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "telemetry/Export.h"

/// Name of performance-marker events.
TELEMETRY_EXPORT extern const char* const kKlxEventName;
/// Name under which older clients log performance-marker events.
TELEMETRY_EXPORT extern const char* const kLegacyKlxEventName;
/// Prefix of the string identifier of on-demand events; the campaign id follows it.
TELEMETRY_EXPORT extern const char* const kOnDemandPrefix;

namespace Velo::OS::Telemetry {

/// The path through which an event was logged. Values below `SpecificAtom` are JSON bundles.
enum class IntakeFormat : int32_t {
    JsonBundle = 0,
    Libtelemetry = 1,
    OsNdk = 2,
    SpecificAtom = 3,
    GenericAtom = 4,
    NestedAtom = 5,
    HalAtom = 6,
    AndroidAtom = 7,
};

/// The kind of atom that an atom id denotes. Every id has one.
TELEMETRY_EXPORT IntakeFormat getAtomIntakeFormat(int atomId);

/// The format that a logging pathway ("libtelemetry" or "osndk", in exactly these letters) stands for.
/// Any other pathway is logged at debug priority and has none.
TELEMETRY_EXPORT std::optional<IntakeFormat> getIntakeFormatFromLoggingPathway(std::string pathway);

/// The display name, for example "JSON Bundle". Empty for a value that is no enumerator.
TELEMETRY_EXPORT std::string getFormatName(IntakeFormat format);

/// Whether the event was logged as a JSON bundle rather than as an atom.
TELEMETRY_EXPORT bool isFormatJsonBundle(IntakeFormat format);

}  // namespace Velo::OS::Telemetry
