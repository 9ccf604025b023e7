#pragma once

#include <memory>
#include <optional>
#include <string>

#include "replay/Console.h"
#include "replay/DevicePipeline.h"
#include "replay/RunFiles.h"
#include "replay/StoreFile.h"
#include "replay/StoredSequenceNumbers.h"

namespace Velo::OS::Telemetry::replay {

/// A device on this desk: a pipeline with all that it needs, from the files that describe the device and its store.
class DeskDevice {
public:
    /// Without a path the store is a temporary one. Throws `FileError`.
    DeskDevice(RunFiles& files, const std::optional<std::string>& storePath, Console& console);

    DevicePipeline& pipeline() { return *pipeline_; }
    /// Throws `FileError`.
    void handBackSequenceNumbers() { sequenceNumbers_->handBack(); }

private:
    std::optional<StoreFile> store_, emptyStore_;  // the latter in place of a schema
    std::shared_ptr<StoredSequenceNumbers> sequenceNumbers_;
    std::optional<DevicePipeline> pipeline_;
};

}  // namespace Velo::OS::Telemetry::replay
