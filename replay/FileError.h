#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

#include "replay/Escape.h"

namespace Velo::OS::Telemetry::replay {

/// A file of the run cannot be used, for example "cannot write out.jsonl: No space left on device". It ends the run,
/// which is why it is thrown: no write can go unchecked.
class FileError : public std::runtime_error {
public:
    /// `action` is "open", "read" or "write", `error` a value of errno.
    FileError(const std::string& action, const std::string& file, int error)
        : std::runtime_error("cannot " + action + " " + file + ": " + std::generic_category().message(error)) {}

    /// Escapes the message, which would end at a NUL.
    explicit FileError(const std::string& message) : std::runtime_error(escaped(message)) {}
};

/// Whoever read standard output has seen enough: `head`, or a pager. That ends the run too, but is no fault.
class ReaderLeft : public FileError {
public:
    ReaderLeft() : FileError("write", "<stdout>", EPIPE) {}
};

}  // namespace Velo::OS::Telemetry::replay
