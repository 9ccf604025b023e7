#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "replay/ExitStatus.h"
#include "replay/ExplainCommand.h"
#include "replay/RunOptions.h"

namespace Velo::OS::Telemetry::replay {

/// The command line of telemetry-replay: what can be asked for, and what was. To be run once.
class CommandLine {
public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Does what the arguments, as `main` has them, ask for. What is wrong with a call goes to standard error.
    ExitStatus run(int argc, const char* const* argv);

private:
    void addRun();
    void addExplain();
    void addSchema();
    void addInit();
    CLI::App& addCommand(CLI::App& parent, const std::string& name, std::function<ExitStatus()> action);

    CLI::App tool_;
    bool wantsManPage_ = false;
    bool wantsBashCompletion_ = false;
    RunOptions run_;
    ExplainOptions explain_;
    std::string schemaFile_;
    std::vector<std::string> schemaNames_;
    std::string newDirectory_;
    std::function<ExitStatus()> action_;  // none until a command has been parsed
};

}  // namespace Velo::OS::Telemetry::replay
