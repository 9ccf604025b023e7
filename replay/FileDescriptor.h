#pragma once

#include <sys/stat.h>

#include <utility>

namespace Velo::OS::Telemetry::replay {

/// Owns a file descriptor, or none (-1).
class FileDescriptor {
public:
    explicit FileDescriptor(int number = -1) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    int number() const { return number_; }

    /// The value of errno, 0 if all went well. Some file systems tell only here that a write failed.
    int close();

private:
    int number_;
};

/// What the descriptor is open on; all zeros if it cannot be told.
struct stat fileStatus(const FileDescriptor& file);

/// Makes sure that descriptors 0 to 2 are open, so that no file of the run gets one of these numbers and receives what
/// is meant for standard output or standard error. One that was closed fails when it is used.
void occupyStandardDescriptors();

}  // namespace Velo::OS::Telemetry::replay
