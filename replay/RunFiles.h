#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "replay/InputFile.h"
#include "replay/OutputFile.h"
#include "replay/RunOptions.h"

namespace Velo::OS::Telemetry::replay {

/// All files of a run, open before its first event.
struct RunFiles {
    std::vector<InputFile> inputs;
    OutputFile output;
    std::optional<OutputFile> rejects;
    std::optional<OutputFile> trace;

    /// Bytes left to read in all inputs, if that is known.
    std::optional<uint64_t> inputBytes() const;
};

/// Opens every file and empties the outputs. Throws `FileError` if one cannot be opened, if an output is also an input,
/// or if two outputs are the same; no file has been emptied then.
RunFiles openRunFiles(const RunOptions& options);

}  // namespace Velo::OS::Telemetry::replay
