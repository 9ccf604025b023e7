#pragma once

#include "replay/ExitStatus.h"
#include "replay/Explainer.h"
#include "replay/RunOptions.h"

namespace Velo::OS::Telemetry::replay {

/// The command line of `explain`.
struct ExplainOptions {
    RunOptions run;  // its inputs, device, schema and output
    ExplainChoice choice;
    bool json = false;
};

/// Says what is wrong on standard error. Bad input is also that no event was chosen.
ExitStatus explainCommand(const ExplainOptions& options);

}  // namespace Velo::OS::Telemetry::replay
