#include "replay/ConfigCommand.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "replay/Console.h"
#include "replay/DeviceFile.h"
#include "replay/Escape.h"
#include "replay/OutputFile.h"

namespace Velo::OS::Telemetry::replay {

namespace {

std::string toText(const std::string& path) { return path; }
std::string toText(const std::optional<std::string>& path) { return path.value_or("none"); }
std::string toText(bool flag) { return flag ? "true" : "false"; }
std::string toText(unsigned number) { return std::to_string(number); }
std::string toText(uint64_t number) { return std::to_string(number); }

std::vector<ReadValue> listOptions(const RunOptions& options, const std::set<std::string>& given) {
    std::vector<ReadValue> values;
    for (const std::string& input : options.inputs) values.push_back({"input", input, "command line"});
    if (values.empty()) values.push_back({"input", "-", "default"});

    const auto add = [&](const char* name, auto RunOptions::*member) {
        values.push_back({name, toText(options.*member), given.count(name) > 0 ? "command line" : "default"});
    };
    add("device", &RunOptions::device);
    add("schema", &RunOptions::schema);
    add("store", &RunOptions::store);
    add("output", &RunOptions::output);
    add("rejects", &RunOptions::rejects);
    add("drops", &RunOptions::drops);
    add("monitor-events", &RunOptions::monitorEvents);
    add("trace", &RunOptions::trace);
    add("expect", &RunOptions::expectations);
    add("report", &RunOptions::report);
    add("report-events", &RunOptions::reportEvents);
    add("threads", &RunOptions::threads);
    add("strict", &RunOptions::strict);
    add("quiet", &RunOptions::quiet);
    for (ReadValue& value : values) {
        if (value.path == "schema" && !options.schema && options.store) value = {"schema", *options.store, "store"};
        if (value.path == "threads" && options.strict) value = {"threads", "1", "--strict"};
    }
    return values;
}

/// Fills up to the width, or by a single space.
std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

/// In columns, wide enough for all but the longest.
std::string toColumns(const std::vector<ReadValue>& values) {
    constexpr size_t kMaxNameWidth = 80, kMaxValueWidth = 44;
    size_t nameWidth = 0, valueWidth = 0;
    for (const ReadValue& row : values) {
        nameWidth = std::max(nameWidth, std::min(escaped(row.path).size() + 2, kMaxNameWidth));
        valueWidth = std::max(valueWidth, std::min(escaped(row.value).size() + 2, kMaxValueWidth));
    }
    std::string text;
    for (const ReadValue& row : values) {
        text += padded(escaped(row.path), nameWidth);
        text += padded(escaped(row.value), valueWidth);
        text += escaped(row.source);
        text += '\n';
    }
    return text;
}

}  // namespace

ExitStatus printConfigCommand(const RunOptions& options, const std::set<std::string>& given) {
    Console console(options.quiet);
    const bool printed = console.attempt([&] {
        std::optional<InputFile> device;
        if (options.device) device.emplace(*options.device);
        std::vector<ReadValue> values = listOptions(options, given);
        const std::vector<ReadValue> ofDevice = listDevice(device ? &*device : nullptr);
        values.insert(values.end(), ofDevice.begin(), ofDevice.end());
        OutputFile output("-");
        output.write(toColumns(values));
        output.close();
    });
    return printed ? ExitStatus::Success : ExitStatus::Unusable;
}

}  // namespace Velo::OS::Telemetry::replay
