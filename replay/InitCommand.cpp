#include "replay/InitCommand.h"

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <vector>

#include "embedded/starter.h"
#include "replay/Console.h"
#include "replay/Escape.h"
#include "replay/FileError.h"
#include "replay/OutputFile.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr char kDeviceName[] = "device.json", kSchemaName[] = "schema.json", kEventsName[] = "events.jsonl";

struct StarterFile {
    const char* name;
    std::string_view text;
};

std::vector<StarterFile> starterFiles() {
    return {{kDeviceName, embedded::device_json},
            {kSchemaName, embedded::schema_json},
            {kEventsName, embedded::events_jsonl}};
}

/// The directory, by which files in it can be named on a command line: "-x" would be taken for options there.
std::filesystem::path argumentFor(const std::string& directory) {
    return directory.starts_with('-') ? "./" + directory : directory;
}

void createDirectory(const std::filesystem::path& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) throw FileError("create", directory, error.value());
}

/// All or none: a file that is left would be in the way of the next attempt.
void writeFiles(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> written;
    try {
        for (const StarterFile& file : starterFiles()) {
            const std::filesystem::path path = directory / file.name;
            OutputFile output(path, OutputFile::Existing::Refuse);
            written.push_back(path);
            output.write(file.text);
            output.close();
        }
    } catch (...) {
        std::error_code ignored;
        for (const std::filesystem::path& path : written) std::filesystem::remove(path, ignored);
        throw;
    }
}

/// As a word of a shell's command line.
std::string quoted(const std::string& text) {
    constexpr char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./+,:@%=";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) return text;
    std::string word = "'";
    for (const char c : text) {
        if (c == '\'') {
            word += "'\\''";
        } else {
            word += c;
        }
    }
    return word + "'";
}

std::string whatNow(const std::filesystem::path& directory) {
    const auto argument = [&](const char* name) { return escaped(quoted(directory / name)); };
    const std::string tool = "  " + escaped(quoted(program_invocation_name)) + " ";
    const std::string input =
        " " + argument(kEventsName) + " --device " + argument(kDeviceName) + " --schema " + argument(kSchemaName);

    std::string text = "The device, the categories of events, and ten events, each with what becomes of it:\n";
    for (const StarterFile& file : starterFiles()) {
        text.append("  ").append(escaped((directory / file.name).string())).append("\n");
    }
    text += "\nReplay the events; explain why the fourth is dropped; check the categories:\n";
    text += tool + "run" + input + " --output " + argument("out.jsonl") + " --drops " + argument("drops.jsonl") + "\n";
    text += tool + "explain" + input + " --line 4\n";
    text += tool + "schema check " + argument(kSchemaName) + "\n";
    return text;
}

}  // namespace

ExitStatus initCommand(const std::string& directory) {
    Console console(/*quiet=*/false);
    const std::filesystem::path path = argumentFor(directory);
    const bool isDone = console.attempt([&] {
        createDirectory(path);
        writeFiles(path);
        OutputFile output("-");
        output.write(whatNow(path));
        output.close();
    });
    return isDone ? ExitStatus::Success : ExitStatus::Unusable;
}

}  // namespace Velo::OS::Telemetry::replay
