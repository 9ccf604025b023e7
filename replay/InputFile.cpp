#include "replay/InputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "replay/FileError.h"
#include "replay/Interruption.h"

namespace Velo::OS::Telemetry::replay {

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "<stdin>" : path),
      file_(path == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (file_.number() < 0) throw FileError("open", name_, errno);
    status_ = fileStatus(file_);
    if (S_ISDIR(status_.st_mode)) throw FileError("read", name_, EISDIR);
}

std::optional<uint64_t> InputFile::remainingBytes() const {
    if (!S_ISREG(status_.st_mode)) return std::nullopt;
    const off_t position = ::lseek(file_.number(), 0, SEEK_CUR);
    if (position < 0 || position > status_.st_size) return std::nullopt;
    return static_cast<uint64_t>(status_.st_size - position);
}

bool InputFile::isTerminal() const { return ::isatty(file_.number()) == 1; }

/// False if there is no use in waiting. A regular file always has bytes, or its end.
bool InputFile::awaitBytes() {
    if (S_ISREG(status_.st_mode)) return true;
    const bool isUseless = !isReadable(file_.number()) && onWait_ && !onWait_();
    isCutOff_ = isUseless || !waitUntilReadable(file_.number());
    return !isCutOff_;
}

size_t InputFile::read(char* buffer, size_t capacity) {
    for (;;) {
        if (!awaitBytes()) return 0;
        const ssize_t count = ::read(file_.number(), buffer, capacity);
        if (count == 0) checkNotShortened();
        if (count >= 0) return static_cast<size_t>(count);
        if (errno != EINTR) throw FileError("read", name_, errno);
    }
}

/// What has been cut off may have held events, and would be missed by nobody.
void InputFile::checkNotShortened() const {
    if (S_ISREG(status_.st_mode) && fileStatus(file_).st_size < status_.st_size) {
        throw FileError("cannot read " + name_ + ": it has become shorter meanwhile");
    }
}

}  // namespace Velo::OS::Telemetry::replay
