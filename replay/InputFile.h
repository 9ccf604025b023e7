#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

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

    /// Whether `read` would not have to wait.
    bool isReady() const;
    /// Reads up to `capacity` bytes, what is there now; 0 at the end, and once the run is to end. Throws `FileError`.
    size_t read(char* buffer, size_t capacity);
    bool isTerminal() const;

private:
    std::string name_;
    FileDescriptor file_;
    struct stat status_;
};

}  // namespace Velo::OS::Telemetry::replay
