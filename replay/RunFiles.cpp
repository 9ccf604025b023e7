#include "replay/RunFiles.h"

#include <sys/stat.h>

#include "replay/FileError.h"

namespace Velo::OS::Telemetry::replay {

namespace {

bool isSameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

/// Terminals and sockets may well be read and written at once.
void checkNotAnInput(const OutputFile& output, const InputFile& input) {
    if (S_ISREG(output.status().st_mode) && isSameFile(output.status(), input.status())) {
        throw FileError("cannot write " + output.name() + ": it is an input");
    }
}

/// Asks by the path: opening and closing the file would drop the locks that SQLite holds on it.
void checkNotTheStore(const OutputFile& output, const std::string& storePath) {
    struct stat store {};
    if (::stat(storePath.c_str(), &store) == 0 && isSameFile(output.status(), store)) {
        throw FileError("cannot write " + output.name() + ": it is the store");
    }
}

/// Lines for /dev/null and its like do not get in each other's way.
void checkNotTheSame(const OutputFile& output, const OutputFile& earlier) {
    const bool isDevice = S_ISCHR(output.status().st_mode) && !output.isTerminal();
    if (!isDevice && isSameFile(output.status(), earlier.status())) {
        throw FileError("cannot write " + output.name() + ": it is the same place as " + earlier.name());
    }
}

std::vector<InputFile> openInputs(const RunOptions& options) {
    std::vector<std::string> paths = options.inputs;
    if (paths.empty()) paths.emplace_back("-");
    std::vector<InputFile> inputs;
    for (const std::string& path : paths) {
        if (path == "-" && options.device == "-") {
            throw FileError("cannot read events from <stdin>: it describes the device");
        }
        inputs.emplace_back(path);
    }
    return inputs;
}

template <typename File>
std::optional<File> openIfNamed(const std::optional<std::string>& path) {
    return path ? std::optional<File>(*path) : std::nullopt;
}

}  // namespace

std::optional<uint64_t> RunFiles::inputBytes() const {
    uint64_t total = 0;
    for (const InputFile& input : inputs) {
        const std::optional<uint64_t> bytes = input.remainingBytes();
        if (!bytes) return std::nullopt;
        total += *bytes;
    }
    return total;
}

std::vector<OutputFile*> RunFiles::outputs() {
    std::vector<OutputFile*> all = {&output};
    if (rejects) all.push_back(&*rejects);
    if (trace) all.push_back(&*trace);
    return all;
}

void RunFiles::emptyOutputs() {
    for (OutputFile* file : outputs()) file->truncate();
}

RunFiles openRunFiles(const RunOptions& options) {
    RunFiles files{
        .inputs = openInputs(options),
        .device = openIfNamed<InputFile>(options.device),
        .store = StoreFile(options.store.value_or("")),
        .output = OutputFile(options.output),
        .rejects = openIfNamed<OutputFile>(options.rejects),
        .trace = openIfNamed<OutputFile>(options.trace),
    };
    const std::vector<OutputFile*> outputs = files.outputs();
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        for (const InputFile& input : files.inputs) checkNotAnInput(**output, input);
        if (files.device) checkNotAnInput(**output, *files.device);
        if (options.store) checkNotTheStore(**output, *options.store);
        for (auto earlier = outputs.begin(); earlier != output; ++earlier) checkNotTheSame(**output, **earlier);
    }
    return files;
}

}  // namespace Velo::OS::Telemetry::replay
