#pragma once

#include <string>
#include <vector>

#include "replay/Console.h"

namespace Velo::OS::Telemetry::replay {

/// While it lives, what the library logs at warning priority or above is shown, or handed to who is listening. One at a
/// time in a process.
class LibraryLog {
public:
    /// The console must outlive it.
    explicit LibraryLog(Console& console);
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;
    ~LibraryLog();

    struct Message {
        bool isWarning;  // else an error
        std::string text;
    };
    using Messages = std::vector<Message>;

    /// While it lives, what the calling thread logs is added to the messages, which are lent, instead of being shown.
    class Listening {
    public:
        explicit Listening(Messages& messages);
        Listening(const Listening&) = delete;
        Listening& operator=(const Listening&) = delete;
        ~Listening();

    private:
        Messages* const before_;
    };
};

}  // namespace Velo::OS::Telemetry::replay
