#include "replay/RunFiles.h"

#include <sys/stat.h>

#include "replay/FileError.h"

namespace Velo::OS::Telemetry::replay {

namespace {

bool isSameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

/// Terminals and sockets may well be read and written at once.
void checkNotAnInput(const OutputFile& output, const std::vector<InputFile>& inputs) {
    for (const InputFile& input : inputs) {
        if (S_ISREG(output.status().st_mode) && isSameFile(output.status(), input.status())) {
            throw FileError("cannot write " + output.name() + ": it is an input");
        }
    }
}

/// Lines for /dev/null and its like do not get in each other's way.
void checkNotTheSame(const OutputFile& output, const OutputFile& earlier) {
    const bool isDevice = S_ISCHR(output.status().st_mode) && !output.isTerminal();
    if (!isDevice && isSameFile(output.status(), earlier.status())) {
        throw FileError("cannot write " + output.name() + ": it is the same place as " + earlier.name());
    }
}

std::optional<OutputFile> openIfNamed(const std::optional<std::string>& path) {
    return path ? std::optional<OutputFile>(*path) : std::nullopt;
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

RunFiles openRunFiles(const RunOptions& options) {
    std::vector<InputFile> inputs;
    for (const std::string& path : options.inputs) inputs.emplace_back(path);
    if (inputs.empty()) inputs.emplace_back("-");

    RunFiles files{std::move(inputs), OutputFile(options.output), openIfNamed(options.rejects),
                   openIfNamed(options.trace)};
    std::vector<OutputFile*> outputs = {&files.output};
    if (files.rejects) outputs.push_back(&*files.rejects);
    if (files.trace) outputs.push_back(&*files.trace);

    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        checkNotAnInput(**output, files.inputs);
        for (auto earlier = outputs.begin(); earlier != output; ++earlier) checkNotTheSame(**output, **earlier);
    }
    for (OutputFile* output : outputs) output->truncate();
    return files;
}

}  // namespace Velo::OS::Telemetry::replay
