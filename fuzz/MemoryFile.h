#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fuzz/Property.h"
#include "replay/InputFile.h"

namespace Velo::OS::Telemetry::fuzz {

/// A file with this content that is on no disk.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content) : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
        const bool isWritten =
            write(descriptor_, content.data(), content.size()) == static_cast<ssize_t>(content.size());
        require(descriptor_ >= 0 && isWritten, "There is memory for the input");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(descriptor_); }

    /// From the beginning.
    replay::InputFile open() const { return replay::InputFile("/proc/self/fd/" + std::to_string(descriptor_)); }

private:
    const int descriptor_;
};

}  // namespace Velo::OS::Telemetry::fuzz
