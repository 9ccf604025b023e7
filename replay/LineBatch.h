#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "replay/InputFile.h"
#include "replay/LinePlace.h"
#include "replay/LineReader.h"

namespace Velo::OS::Telemetry::replay {

/// Lines of one file, without blank ones.
class LineBatch {
public:
    struct Line {
        uint64_t number;
        size_t begin, length;
    };

    void begin(const std::string& file);
    void add(uint64_t number, std::string_view text);

    const std::string& file() const { return file_; }
    const std::vector<Line>& lines() const { return lines_; }
    size_t bytes() const { return text_.size(); }
    /// A NUL follows it in memory.
    std::string_view text(const Line& line) const { return {text_.data() + line.begin, line.length}; }

private:
    std::string file_;
    std::string text_;
    std::vector<Line> lines_;
};

/// Reads files one after another, by the batch.
class BatchReader {
public:
    enum class Found { Lines, LongLine, End };

    /// The files must outlive it. A batch has at most so many lines, and fewer if they are long.
    BatchReader(std::vector<InputFile>& files, size_t maxLines) : files_(files), maxLines_(maxLines) {}

    /// Replaces the batch by the lines that have arrived, at least one. A line that is too long is not in the batch: it
    /// is the reader's. The end may also be an interruption. Throws `FileError`.
    Found next(LineBatch& batch);

    /// Of the file in hand.
    LineReader& reader() { return *reader_; }
    bool isCutOff() const { return files_[file_].isCutOff(); }
    LinePlace place() const { return {files_[file_].name(), reader_->lineNumber()}; }
    bool isInLastFile() const { return file_ + 1 >= files_.size(); }
    /// Of all files, up to the end of the batch.
    uint64_t bytesRead() const { return bytesBefore_ + (reader_ ? reader_->bytesRead() : 0); }

private:
    void open();
    Found take(LineBatch& batch);

    std::vector<InputFile>& files_;
    const size_t maxLines_;
    size_t file_ = 0;
    std::optional<LineReader> reader_;  // of that file, once it is open
    bool longLineWaits_ = false;
    uint64_t bytesBefore_ = 0;
};

}  // namespace Velo::OS::Telemetry::replay
