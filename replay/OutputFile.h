#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "replay/FileDescriptor.h"

namespace Velo::OS::Telemetry::replay {

/// A file, or standard output, written through a buffer. Every failure throws `FileError`, once: after it the file
/// takes whatever it is given and writes nothing. If it is that nobody reads standard output any more, the error is
/// `ReaderLeft`. What `close` has not written is lost, and so is what was written to a file that has been deleted
/// since it was opened: `close` says that too.
class OutputFile {
public:
    /// Opens the file and creates it if there is none, yet leaves its contents; "-" is standard output.
    explicit OutputFile(const std::string& path);

    /// Its path as given, or "<stdout>".
    const std::string& name() const { return name_; }
    const struct stat& status() const { return status_; }
    bool isTerminal() const;
    /// Someone else reads it, and may show it anywhere.
    bool isPipe() const { return S_ISFIFO(status_.st_mode); }

    /// Empties a regular file that was opened by its path.
    void truncate();
    /// Each write call to the system ends where one of these writes ends.
    void write(std::string_view bytes);
    void flush();
    void close();

private:
    void writeThrough(std::string_view bytes);
    bool isDeleted() const;
    [[noreturn]] void fail(int error);

    std::string name_;
    bool isStandardOutput_;
    bool failed_ = false;
    FileDescriptor file_;
    struct stat status_;
    std::string buffer_;
};

}  // namespace Velo::OS::Telemetry::replay
