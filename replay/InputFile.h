#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "replay/FileDescriptor.h"

namespace Velo::OS::Telemetry::replay {

/// A file, or standard input, open for reading.
class InputFile {
public:
    /// "-" is standard input. Throws `FileError` if it cannot be opened or is a directory.
    explicit InputFile(const std::string& path);

    /// Its path as given, or "<stdin>".
    const std::string& name() const { return name_; }
    const struct stat& status() const { return status_; }
    /// Bytes left to read, known for regular files only.
    std::optional<uint64_t> remainingBytes() const;

    /// Has `read` call it before each time that it has to wait, from the thread that reads. False if it need not.
    void onWait(std::function<bool()> onWait) { onWait_ = std::move(onWait); }
    /// Reads up to `capacity` bytes, what is there now; 0 at the end, or if the run is to end before there is more.
    /// Throws `FileError`, also at the end of a file that has become shorter since it was opened.
    size_t read(char* buffer, size_t capacity);
    /// Whether that has returned 0 although there may be more to come.
    bool isCutOff() const { return isCutOff_; }
    bool isTerminal() const;

private:
    bool awaitBytes();
    void checkNotShortened() const;

    std::string name_;
    FileDescriptor file_;
    std::function<bool()> onWait_;
    bool isCutOff_ = false;
    struct stat status_;
};

}  // namespace Velo::OS::Telemetry::replay
