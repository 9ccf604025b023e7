#pragma once

#include "replay/Console.h"
#include "replay/LinePlace.h"

namespace Velo::OS::Telemetry::replay {

/// While it lives, what the library logs at warning priority or above is shown as a message about the line in hand.
/// One at a time in a process.
class LibraryLog {
public:
    /// The console must outlive it.
    explicit LibraryLog(Console& console);
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;
    ~LibraryLog();

    /// What the calling thread logs from now on is about this place, which must outlive the logging; null: about none.
    /// If it is muted, it is not shown.
    static void setPlace(const LinePlace* place, bool muted = false);
};

}  // namespace Velo::OS::Telemetry::replay
