#include "replay/RunFiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

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

/// Whether it is the store's file or one that SQLite keeps beside it. Asks by their paths, because closing a file
/// drops the locks that other parts of the process hold on it.
bool isPartOfStore(const struct stat& status, const std::string& storePath) {
    std::error_code error;
    const std::string path = std::filesystem::weakly_canonical(storePath, error);
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
        struct stat part {};
        if (::stat((path + suffix).c_str(), &part) == 0 && isSameFile(status, part)) return true;
    }
    return false;
}

void checkNotTheStore(const std::string& action, const std::string& name, const struct stat& status,
                      const std::optional<std::string>& storePath) {
    if (storePath && isPartOfStore(status, *storePath)) {
        throw FileError("cannot " + action + " " + name + ": it is part of the store");
    }
}

/// Lines for /dev/null and its like do not get in each other's way.
void checkNotTheSame(const OutputFile& output, const OutputFile& earlier) {
    const bool isDevice = S_ISCHR(output.status().st_mode) && !output.isTerminal();
    if (!isDevice && isSameFile(output.status(), earlier.status())) {
        throw FileError("cannot write " + output.name() + ": it is the same place as " + earlier.name());
    }
}

std::vector<InputFile> openInputs(const std::vector<std::string>& paths) {
    std::vector<InputFile> inputs(paths.begin(), paths.end());
    if (inputs.empty()) inputs.emplace_back("-");
    return inputs;
}

template <typename File>
std::optional<File> openIfNamed(const std::optional<std::string>& path) {
    return path ? std::optional<File>(*path) : std::nullopt;
}

/// What is read beside events, and what to say of it.
std::vector<std::pair<const InputFile*, const char*>> descriptions(const RunFiles& files) {
    std::vector<std::pair<const InputFile*, const char*>> all;
    const auto add = [&](const std::optional<InputFile>& file, const char* meaning) {
        if (file) all.emplace_back(&*file, meaning);
    };
    add(files.device, "it describes the device");
    add(files.schema, "it is the event schema");
    add(files.expectations, "it holds the expectations");
    return all;
}

void checkInputs(const RunFiles& files, const std::optional<std::string>& storePath) {
    for (const InputFile& input : files.inputs) {
        checkNotTheStore("read", input.name(), input.status(), storePath);
        for (const auto& [file, meaning] : descriptions(files)) {
            if (!isSameFile(input.status(), file->status())) continue;
            throw FileError("cannot read events from " + input.name() + ": " + meaning);
        }
    }
    for (const auto& [file, meaning] : descriptions(files)) {
        checkNotTheStore("read", file->name(), file->status(), storePath);
    }
}

void checkOutputs(RunFiles& files, const std::optional<std::string>& storePath) {
    const std::vector<OutputFile*> outputs = files.outputs();
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        for (const InputFile& input : files.inputs) checkNotAnInput(**output, input);
        for (const auto& [file, meaning] : descriptions(files)) checkNotAnInput(**output, *file);
        checkNotTheStore("write", (*output)->name(), (*output)->status(), storePath);
        for (auto earlier = outputs.begin(); earlier != output; ++earlier) checkNotTheSame(**output, **earlier);
    }
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

bool RunFiles::isTyped() const {
    return std::any_of(inputs.begin(), inputs.end(), [](const InputFile& input) { return input.isTerminal(); });
}

std::vector<OutputFile*> RunFiles::outputs() {
    std::vector<OutputFile*> all = {&output};
    for (std::optional<OutputFile>* file : {&rejects, &drops, &monitorEvents, &trace, &report}) {
        if (*file) all.push_back(&**file);
    }
    return all;
}

bool RunFiles::hasFailedOutput() const {
    const auto hasFailed = [](const std::optional<OutputFile>& file) { return file && file->hasFailed(); };
    return output.hasFailed() || hasFailed(rejects) || hasFailed(drops) || hasFailed(monitorEvents);
}

void RunFiles::emptyOutputs() {
    for (OutputFile* file : outputs()) file->truncate();
}

RunFiles openRunFiles(const RunOptions& options) {
    RunFiles files{
        .inputs = openInputs(options.inputs),
        .device = openIfNamed<InputFile>(options.device),
        .schema = openIfNamed<InputFile>(options.schema),
        .expectations = openIfNamed<InputFile>(options.expectations),
        .output = OutputFile(options.output),
        .rejects = openIfNamed<OutputFile>(options.rejects),
        .drops = openIfNamed<OutputFile>(options.drops),
        .monitorEvents = openIfNamed<OutputFile>(options.monitorEvents),
        .trace = openIfNamed<OutputFile>(options.trace),
        .report = openIfNamed<OutputFile>(options.report),
    };
    checkInputs(files, options.store);
    checkOutputs(files, options.store);
    return files;
}

}  // namespace Velo::OS::Telemetry::replay
