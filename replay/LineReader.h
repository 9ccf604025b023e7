#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "replay/InputFile.h"

namespace Velo::OS::Telemetry::replay {

/// Splits a file into lines. A byte order mark at the file's start is skipped; a last line needs no newline.
class LineReader {
public:
    /// Bytes of the longest line, its newline not counted: 1 MiB.
    static constexpr size_t kMaxLineLength = 1'048'576;

    enum class Found { Line, LongLine, End };

    /// The file must outlive the reader.
    explicit LineReader(InputFile& file);

    /// Whether the next line can be had without reading on in the file.
    bool hasLine() const;
    /// Goes on to the next line, past whatever is left of a long one. Throws `FileError`.
    Found next();

    /// The line without its newline; a NUL follows it in memory. Of a long line the part in hand, with no NUL. Valid
    /// until the reader is called again.
    std::string_view text() const { return text_; }
    /// Replaces the text by the next part of a long line; false if there is none. Throws `FileError`.
    bool nextPart();

    /// Number of the line in hand, from 1.
    uint64_t lineNumber() const { return lineNumber_; }
    /// Bytes of the file up to the end of the text in hand, the newline included.
    uint64_t bytesRead() const { return bytesRead_; }

private:
    bool fill();
    Found take(size_t length, bool newlineFollows);
    void skipByteOrderMark();

    InputFile& file_;
    std::unique_ptr<char[]> buffer_;
    size_t begin_ = 0;  // of what has been read but not handed out
    size_t end_ = 0;
    bool inLongLine_ = false;
    std::string_view text_;
    uint64_t lineNumber_ = 0;
    uint64_t bytesRead_ = 0;
};

}  // namespace Velo::OS::Telemetry::replay
