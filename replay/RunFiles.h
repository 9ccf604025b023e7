#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "replay/InputFile.h"
#include "replay/OutputFile.h"
#include "replay/RunOptions.h"
#include "replay/StoreFile.h"

namespace Velo::OS::Telemetry::replay {

/// All files of a run, open before its first event.
struct RunFiles {
    std::vector<InputFile> inputs;
    std::optional<InputFile> device;
    StoreFile store;
    OutputFile output;
    std::optional<OutputFile> rejects;
    std::optional<OutputFile> trace;

    /// Bytes left to read in all inputs, if that is known.
    std::optional<uint64_t> inputBytes() const;

    std::vector<OutputFile*> outputs();
    void emptyOutputs();
};

/// Opens every file. Throws `FileError` if one cannot be opened, if an output is also read or is the store, or if two
/// outputs are the same.
RunFiles openRunFiles(const RunOptions& options);

}  // namespace Velo::OS::Telemetry::replay
