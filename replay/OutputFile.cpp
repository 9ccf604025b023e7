#include "replay/OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "replay/FileError.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr size_t kBufferSize = 65'536;
constexpr mode_t kNewFileMode = 0666;  // less the user's umask

int flagsFor(OutputFile::Existing existing) {
    return O_WRONLY | O_CREAT | O_CLOEXEC | (existing == OutputFile::Existing::Refuse ? O_EXCL : 0);
}

}  // namespace

OutputFile::OutputFile(const std::string& path, Existing existing)
    : name_(path == "-" ? "<stdout>" : path),
      isStandardOutput_(path == "-"),
      file_(isStandardOutput_ ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                              : ::open(path.c_str(), flagsFor(existing), kNewFileMode)) {
    if (file_.number() < 0 && errno == EEXIST) throw FileError("cannot write " + name_ + ": it exists already");
    if (file_.number() < 0) throw FileError("open", name_, errno);
    status_ = fileStatus(file_);
    buffer_.reserve(kBufferSize);
}

bool OutputFile::isTerminal() const { return ::isatty(file_.number()) == 1; }

void OutputFile::truncate() {
    if (isStandardOutput_ || !S_ISREG(status_.st_mode)) return;
    if (::ftruncate(file_.number(), 0) != 0) throw FileError("write", name_, errno);
}

void OutputFile::write(std::string_view bytes) {
    if (hasFailed()) return;
    if (buffer_.size() + bytes.size() > kBufferSize) flush();
    if (bytes.size() > kBufferSize) {
        writeThrough(bytes);
    } else {
        buffer_ += bytes;
    }
}

void OutputFile::flush() {
    writeThrough(buffer_);
    buffer_.clear();
}

void OutputFile::close() {
    flush();
    const bool wasDeleted = isDeleted();
    const int error = file_.close();
    if (!hasFailed()) error_ = error;
    if (isStandardOutput_ && error_ == EPIPE) throw ReaderLeft();
    if (hasFailed()) throw FileError("write", name_, error_);
    if (wasDeleted) throw FileError("cannot write " + name_ + ": it was deleted meanwhile");
}

/// A file that had no name when it was opened, by way of another descriptor, has lost none. Who redirects standard
/// output may well keep it in such a file, and whoever reads a named pipe may delete its name once it is open.
bool OutputFile::isDeleted() const {
    return !isStandardOutput_ && S_ISREG(status_.st_mode) && status_.st_nlink > 0 && file_.number() >= 0 &&
           fileStatus(file_).st_nlink == 0;
}

void OutputFile::writeThrough(std::string_view bytes) {
    while (!bytes.empty() && !hasFailed()) {
        const ssize_t count = ::write(file_.number(), bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<size_t>(count));
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
}

}  // namespace Velo::OS::Telemetry::replay
