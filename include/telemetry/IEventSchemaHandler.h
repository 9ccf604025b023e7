#pragma once

#include <cstdint>
#include <string>

#include "telemetry/Export.h"

namespace Velo::OS::Telemetry {

/// Knows how the events of the device are classified. Called from any thread.
///
/// The service was compiled against these slots: the first operation is entry 1, so the destructor is declared last.
class TELEMETRY_EXPORT IEventSchemaHandler {
public:
    /// Which consent an event needs to leave the device.
    enum class EventCategory : int32_t {
        Essential = 0,
        NonEssential = 1,
        NeedsReview = 2,
        Uncategorized = 3,
        Invalid = 4,
        NonEssentialWithOtherConsent = 5,
    };

    /// Replaces the schema by the one in the JSON text; whether there is one in it.
    virtual bool persistEventSchema(const std::string& schema) = 0;
    virtual EventCategory getEventCategory(const std::string& eventName) = 0;
    /// Until the next schema arrives, the event is of this category.
    virtual void overrideEventCategory(const std::string& eventName, EventCategory category) = 0;
    virtual bool isEventSchemaAvailable() = 0;
    /// When the schema was made, as it says itself in a unit of its own; 0 unless that is an unsigned 64-bit integer.
    virtual uint64_t getEventSchemaTimestamp() = 0;
    /// Whether the event serves personalization and nothing else.
    virtual bool isPersonalizationPurposeOnly(const std::string& eventName) = 0;
    virtual bool isAdsPersonalizationPurposeOnly(const std::string& eventName) = 0;
    virtual ~IEventSchemaHandler() = default;
};

}  // namespace Velo::OS::Telemetry
