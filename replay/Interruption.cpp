#include "replay/Interruption.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace Velo::OS::Telemetry::replay {

namespace {

std::atomic<int> signalNumber{0};
static_assert(std::atomic<int>::is_always_lock_free);  // or a signal handler could not touch it

/// What a signal handler writes wakes who waits, even one that is only about to.
int wakeUp[2] = {-1, -1};

/// Which signals are handled: not those that were ignored before.
volatile std::sig_atomic_t isHandled[NSIG];

void handle(int signal) {
    const int error = errno;
    signalNumber = signal;
    // Output to a reader that has stopped reading may never come to an end: the next signal need not wait for it.
    for (const int other : {SIGINT, SIGTERM}) {
        if (isHandled[other]) std::signal(other, SIG_DFL);
    }
    [[maybe_unused]] const ssize_t ignored = ::write(wakeUp[1], "", 1);
    errno = error;
}

}  // namespace

void expectInterruption() {
    if (::pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0) return;  // signals then do what they always do
    struct sigaction action {};
    action.sa_handler = &handle;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction before {};
        ::sigaction(signal, nullptr, &before);
        // A shell has its background jobs ignore what the keyboard sends.
        if (before.sa_handler == SIG_IGN) continue;
        isHandled[signal] = 1;
        ::sigaction(signal, &action, nullptr);
    }
}

int interruption() { return signalNumber; }

ExitStatus statusOfInterruption() {
    return interruption() == SIGTERM ? ExitStatus::Terminated : ExitStatus::Interrupted;
}

bool waitUntilReadable(int file) {
    pollfd files[] = {{file, POLLIN, 0}, {wakeUp[0], POLLIN, 0}};
    while (interruption() == 0) {
        const int count = ::poll(files, 2, -1);
        if (count < 0 && errno == EINTR) continue;
        return interruption() == 0;
    }
    return false;
}

bool isReadable(int file) {
    pollfd files[] = {{file, POLLIN, 0}};
    return ::poll(files, 1, 0) != 0;
}

}  // namespace Velo::OS::Telemetry::replay
