#include "telemetry/IntakeFormat.h"

#include <android/log.h>

const char* const kKlxEventName = "perf";
const char* const kLegacyKlxEventName = "perf_utl";
const char* const kOnDemandPrefix = "odt_";

namespace Velo::OS::Telemetry {

IntakeFormat getAtomIntakeFormat(int atomId) {
    if (atomId == 111222) return IntakeFormat::GenericAtom;
    if (atomId >= 115000 && atomId <= 119999) return IntakeFormat::HalAtom;
    if (atomId >= 120000 && atomId <= 129999) return IntakeFormat::NestedAtom;
    if (atomId >= 2 && atomId <= 99999) return IntakeFormat::AndroidAtom;
    return IntakeFormat::SpecificAtom;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): services were compiled against a parameter by value.
std::optional<IntakeFormat> getIntakeFormatFromLoggingPathway(std::string pathway) {
    if (pathway == "libtelemetry") return IntakeFormat::Libtelemetry;
    if (pathway == "osndk") return IntakeFormat::OsNdk;
    __android_log_print(ANDROID_LOG_DEBUG, "TelemetryService", "Unknown logging pathway %s", pathway.c_str());
    return std::nullopt;
}

std::string getFormatName(IntakeFormat format) {
    switch (format) {
        case IntakeFormat::JsonBundle:
            return "JSON Bundle";
        case IntakeFormat::Libtelemetry:
            return "Libtelemetry";
        case IntakeFormat::OsNdk:
            return "OSNDK";
        case IntakeFormat::SpecificAtom:
            return "Specific Atom";
        case IntakeFormat::GenericAtom:
            return "Generic Atom";
        case IntakeFormat::NestedAtom:
            return "Nested Atom";
        case IntakeFormat::HalAtom:
            return "HAL Atom";
        case IntakeFormat::AndroidAtom:
            return "Android Atom";
    }
    return {};
}

bool isFormatJsonBundle(IntakeFormat format) { return format < IntakeFormat::SpecificAtom; }

}  // namespace Velo::OS::Telemetry
