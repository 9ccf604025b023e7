// Events of both kinds through every accessor, identifier and text. The input's first line is the name, the second
// JSON: the data of a JSON event, and what is added to a bundle event of which the rest is the bundle. A text member
// "#NAME" is a property, and "sample_rate" a rate.

#include <sstream>
#include <stdexcept>
#include <utility>

#include "fuzz/BundleText.h"
#include "fuzz/JsonProperties.h"

namespace {

using namespace Velo::OS::Telemetry;

/// The number of a property, or what `std::stol` throws of it; whatever else is thrown ends the run.
template <typename Read>
std::string numberOrThrown(Read read) {
    try {
        return std::to_string(read());
    } catch (const std::invalid_argument&) {
        return "no number";
    } catch (const std::out_of_range&) {
        return "too large";
    }
}

template <typename... Values>
std::string linesOf(const Values&... values) {
    std::ostringstream lines;
    ((lines << values << '\n'), ...);
    return lines.str();
}

std::string answersOf(const TelemetryEventBundle& event) {
    return linesOf(event.name(), event.sessionsV2(), event.uid(), event.priority(), event.time(),
                   event.clientCreatedTime(), event.adjustedTime(), event.loggingPackage(), event.deviceId(),
                   event.osBuildNumber(), event.appId(), event.appVersion(), event.tags(), event.sampleRateAsPelko(),
                   getFormatName(event.getIntakeFormat()), event.getLoggingPathway().value_or("-"),
                   event.getArvoUserIdFromSorel(), numberOrThrown([&] { return event.arvoUserId(); }),
                   numberOrThrown([&] { return event.consentState(); }));
}

using Properties = std::map<std::string, std::string>;

void requireHeader(TelemetryEventBundle& event, const Properties& properties) {
    Json::Value header;
    for (const auto& [name, value] : properties) header[name] = value;
    header["app_id"] = Json::Int64{event.appId()};
    header["app_version"] = event.appVersion();
    fuzz::requireEqual(event.getJsonBatchHeaderString(), fuzz::jsoncppText(header), "The header is that of jsoncpp");
}

/// An event and what it is to hold.
struct Expected {
    std::string textOfData() const { return data ? fuzz::jsoncppText(*data) : std::string(); }

    std::optional<Json::Value> data;  // none if it cannot be written
    Properties properties;
};

/// `keepsAnswers`: whether the conversion of its bundle changes none of them.
void examine(TelemetryEventBundle& event, Expected expected, bool keepsAnswers) {
    const std::string before = answersOf(event);
    const std::string identifier = event.getStringIdentifier();
    const std::string text = event.getJsonString();
    const Json::Value data = event.getJsonValue();
    fuzz::requireEqual(text, expected.textOfData(), "An event is written with its data");
    if (!text.empty()) {
        fuzz::requireEqual(text, fuzz::jsoncppText(data), "An event is written as jsoncpp would write it");
        fuzz::requireReadsBack(text, data);
        fuzz::require(event.size() == data.size(), "The size of a converted event is that of its data", text);
        if (keepsAnswers) fuzz::requireEqual(answersOf(event), before, "The conversion changes no answer");
    }
    requireHeader(event, expected.properties);
    const std::string header = ", data: " + event.getJsonString() + ", header: " + event.getJsonBatchHeaderString();
    fuzz::require(event.getDebugString().ends_with(header), "The debug line ends in both texts", header);
    event.addString("marker_id", "later");
    fuzz::requireEqual(event.getStringIdentifier(), identifier, "The identifier never changes");
    if (expected.data) (*expected.data)["marker_id"] = "later";
    fuzz::requireEqual(event.getJsonString(), expected.textOfData(), "A member is written that was added later");

    TelemetryEventBundle moved(std::move(event));
    fuzz::require(moved.deviceId().empty() && moved.consentState() == 0, "A moved event has no properties");
    answersOf(moved);
    moved.getDebugString();
    answersOf(event);
    event.getDebugString();
    event = std::move(moved);
    event.getJsonString();
}

void addTo(TelemetryEventBundle& event, const Json::Value& data, Expected& expected) {
    if (!data.isObject()) return;
    for (auto member = data.begin(); member != data.end(); ++member) {
        const std::string name = member.name();
        if (name.starts_with('#') && member->isString()) {
            event.addProperty(name.substr(1), expected.properties[name.substr(1)] = member->asString());
        } else if (name == "sample_rate" && member->isNumeric()) {
            event.setSampleRate(member->asFloat());
            (*expected.data)["applied_sample_rate"] = event.getFromEventMetadata("applied_sample_rate");
        } else {
            event.addJson(name, Json::Value(*member));
            (*expected.data)[name] = *member;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    std::string_view rest = fuzz::textOf(bytes, size);
    const std::string name(fuzz::takeUntil('\n', rest));
    Json::Value data;
    if (!getJsonFromString(std::string(fuzz::takeUntil('\n', rest)).c_str(), data)) data = Json::Value();

    const auto format = static_cast<IntakeFormat>(name.size() % 8);
    TelemetryEventBundle jsonEvent(name, data, 10123, format);
    Expected json;
    if (data.isObject() || data.isNull()) (*(json.data = data))["realtime"] = false;
    addTo(jsonEvent, data, json);
    examine(jsonEvent, std::move(json), true);

    android::os::PersistableBundle bundle = fuzz::BundleText(rest).read();
    const bool isPriority = name.size() % 2 == 1;
    TelemetryEventBundle bundleEvent(name, 10123, isPriority, bundle);
    Expected converted{Json::Value(), {}};
    (*converted.data)["realtime"] = isPriority;
    addTo(bundleEvent, data, converted);
    if (!convertBundleToJson(bundle, *converted.data)) converted.data.reset();
    examine(bundleEvent, std::move(converted), !fuzz::mayHoldNul(rest));
    return 0;
}
