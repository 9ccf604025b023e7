#include <csignal>

#include "replay/CommandLine.h"
#include "replay/FileDescriptor.h"

using namespace Velo::OS::Telemetry::replay;

int main(int argc, char** argv) {
    // A closed pipe or a file grown to its limit is then an error of the write that meets it, with a message.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    occupyStandardDescriptors();
    return static_cast<int>(runCommandLine(argc, argv));
}
