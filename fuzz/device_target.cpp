// Descriptions of devices.

#include <algorithm>

#include "fuzz/JsonProperties.h"
#include "fuzz/Lines.h"
#include "fuzz/MemoryFile.h"
#include "replay/DeviceFile.h"
#include "replay/FileError.h"
#include "replay/Utf8.h"

namespace {

using namespace Velo::OS::Telemetry;

/// What is wrong with the file; nothing if it can be read.
template <typename Read>
std::string faultOf(const fuzz::MemoryFile& memory, Read read) {
    replay::InputFile file = memory.open();
    try {
        read(file);
        return {};
    } catch (const replay::FileError& error) {
        const std::string message = error.what();
        const bool isPlain = replay::findMalformedUtf8(message) == message.size() &&
                             std::none_of(message.begin(), message.end(), [](char c) { return c >= 0 && c < ' '; });
        fuzz::require(isPlain, "An error is one line of UTF-8", message);
        fuzz::require(message.starts_with(file.name()), "An error begins with the file's name", message);
        return message;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::MemoryFile memory(fuzz::textOf(data, size));
    const std::string fault = faultOf(memory, [](replay::InputFile& file) { replay::readDevice(file); });
    const std::string listed = faultOf(memory, [](replay::InputFile& file) {
        for (const replay::ReadValue& value : replay::listDevice(&file)) {
            const bool isPlaced = value.source == "default" || value.source.starts_with(file.name() + ":");
            fuzz::require(!value.path.empty() && isPlaced, "Each value has a path and a source", value.source);
            fuzz::require(fuzz::jsoncppValue(value.value).has_value(), "Each value is JSON", value.value);
        }
    });
    fuzz::requireEqual(listed, fault, "A file can be listed if it can be read");
    return 0;
}
