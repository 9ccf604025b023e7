// Files of events: how they are split into lines, and that both readers of lines agree.

#include "fuzz/JsonProperties.h"
#include "fuzz/Lines.h"
#include "fuzz/MemoryFile.h"
#include "replay/EventDecoder.h"
#include "replay/LineReader.h"

namespace {

using namespace Velo::OS::Telemetry;
using replay::EventDecoder;

/// Everything about the event, or what is wrong with the line.
std::string textOf(EventDecoder::Decoded& decoded) {
    if (const auto* error = std::get_if<replay::LineError>(&decoded)) return "error: " + error->text;
    TelemetryEventBundle& event = *std::get<std::unique_ptr<TelemetryEventBundle>>(decoded);
    const std::string formatBefore = getFormatName(event.getIntakeFormat()) + " " + std::to_string(event.size());
    return formatBefore + " " + event.getStringIdentifier() + " " + event.getDebugString();
}

/// A blank before the line makes the decoder read it with care instead of fast.
void requireReadersAgree(const std::string& line) {
    static EventDecoder decoder;
    EventDecoder::Decoded decoded = decoder.decode(line);
    EventDecoder::Decoded carefully = decoder.decode(" " + line);
    const bool isFast = replay::FastLineReader().read(line).has_value();
    fuzz::require(decoded.index() == carefully.index(), "Both readers take the line or refuse it",
                  line + "\n" + textOf(decoded) + "\n" + textOf(carefully));
    // Of a line that is no JSON the column is told, which is another one behind a blank.
    if (isFast || decoded.index() == 0) fuzz::requireEqual(textOf(decoded), textOf(carefully), "Both readers agree");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view content = fuzz::textOf(data, size);
    const fuzz::MemoryFile memory(content);
    replay::InputFile file = memory.open();
    replay::LineReader reader(file);
    std::string_view rest = content;
    uint64_t lines = 0;
    while (!rest.empty()) {
        std::string expected(fuzz::takeUntil('\n', rest));
        if (lines == 0 && expected.starts_with("\xEF\xBB\xBF")) expected.erase(0, 3);
        fuzz::require(reader.next() == replay::LineReader::Found::Line, "Each line is found", expected);
        fuzz::requireEqual(std::string(reader.text()), expected, "Each line is what stands between two newlines");
        fuzz::require(reader.lineNumber() == ++lines, "Lines are counted", expected);
        fuzz::require(reader.bytesRead() == content.size() - rest.size(), "Bytes are counted", expected);
        requireReadersAgree(expected);
    }
    fuzz::require(reader.next() == replay::LineReader::Found::End, "There are no more lines");
    return 0;
}
