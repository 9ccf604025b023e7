#include <csignal>

#include "replay/CommandLine.h"
#include "replay/Console.h"
#include "replay/FileDescriptor.h"

using namespace Velo::OS::Telemetry::replay;

int main(int argc, char** argv) {
    // A closed pipe or a file grown to its limit is then an error of the write that meets it, with a message.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    occupyStandardDescriptors();
    auto status = ExitStatus::Unusable;
    Console(/*quiet=*/false).attempt([&] { status = runCommandLine(argc, argv); });
    return static_cast<int>(status);
}
