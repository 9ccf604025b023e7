#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "replay/InputFile.h"
#include "replay/OutputFile.h"
#include "replay/RunOptions.h"

namespace Velo::OS::Telemetry::replay {

/// The files of a run, open before its first event.
struct RunFiles {
    std::vector<InputFile> inputs;
    std::optional<InputFile> device, schema, expectations;
    OutputFile output;
    std::optional<OutputFile> rejects, drops, monitorEvents, trace, report;

    /// Bytes left to read in all inputs, if that is known.
    std::optional<uint64_t> inputBytes() const;

    /// Whether someone may be typing the events.
    bool isTyped() const;

    std::vector<OutputFile*> outputs();
    /// Whether one that is written during the run has.
    bool hasFailedOutput() const;
    /// Not before everything else is known to be in order.
    void emptyOutputs();
};

/// Opens every file but the store. Throws `FileError` if one cannot be opened, if an output is also read, if two
/// outputs are the same, if events are to be read from the description of the device or the like, or if any is part of
/// the store.
RunFiles openRunFiles(const RunOptions& options);

}  // namespace Velo::OS::Telemetry::replay
