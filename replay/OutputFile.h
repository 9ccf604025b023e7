#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "replay/FileDescriptor.h"

namespace Velo::OS::Telemetry::replay {

/// A file, or standard output, written through a buffer. After a failed write it takes whatever it is given and writes
/// nothing; `close` throws that failure, so that none is missed or said twice. What `close` has not written is lost,
/// and so is what was written to a file that has been deleted since it was opened: `close` says that too.
class OutputFile {
public:
    /// What to do about a file, or a link, that has the name already.
    enum class Existing : uint8_t { Open, Refuse };
    /// Opens the file and creates it if there is none, yet leaves its contents; "-" is standard output.
    /// Throws `FileError`.
    explicit OutputFile(const std::string& path, Existing existing = Existing::Open);

    /// Its path as given, or "<stdout>".
    const std::string& name() const { return name_; }
    const struct stat& status() const { return status_; }
    bool isTerminal() const;
    /// Someone else reads it, and may show it anywhere.
    bool isPipe() const { return S_ISFIFO(status_.st_mode); }

    /// Empties a regular file that was opened by its path. Throws `FileError`.
    void truncate();
    /// Each write call to the system ends where one of these writes ends.
    void write(std::string_view bytes);
    void flush();
    /// Whether a write has failed, so that there is no use in going on.
    bool hasFailed() const { return error_ != 0; }
    /// Throws `FileError`; `ReaderLeft` if all that failed is that nobody reads standard output any more.
    void close();

private:
    void writeThrough(std::string_view bytes);
    bool isDeleted() const;

    std::string name_;
    bool isStandardOutput_;
    int error_ = 0;  // of the first write that failed, a value of errno
    FileDescriptor file_;
    struct stat status_;
    std::string buffer_;
};

}  // namespace Velo::OS::Telemetry::replay
