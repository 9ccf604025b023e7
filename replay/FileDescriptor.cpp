#include "replay/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Velo::OS::Telemetry::replay {

int FileDescriptor::close() {
    const int number = std::exchange(number_, -1);
    // Interrupted or not, Linux has closed it.
    return number < 0 || ::close(number) == 0 || errno == EINTR ? 0 : errno;
}

struct stat fileStatus(const FileDescriptor& file) {
    struct stat status {};
    if (::fstat(file.number(), &status) != 0) return {};
    return status;
}

void occupyStandardDescriptors() {
    for (int number = 0; number <= 2; ++number) {
        // Opened for the wrong direction. The lowest free number is the one that is missing.
        if (::fcntl(number, F_GETFD) < 0) ::open("/dev/null", number == 0 ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace Velo::OS::Telemetry::replay
