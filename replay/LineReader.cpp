#include "replay/LineReader.h"

#include <cstring>

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// Holds the longest line with a byte order mark before it and its newline after it.
constexpr size_t kCapacity = kByteOrderMark.size() + LineReader::kMaxLineLength + 1;

}  // namespace

// Not set to zero, which would touch every page of what few lines need. libc++ 14 has no make_unique_for_overwrite.
LineReader::LineReader(InputFile& file) : file_(file), buffer_(new char[kCapacity + 1]) {}

bool LineReader::hasLine() const {
    return !inLongLine_ && std::memchr(buffer_.get() + begin_, '\n', end_ - begin_) != nullptr;
}

LineReader::Found LineReader::next() {
    while (inLongLine_) nextPart();

    ++lineNumber_;
    size_t searched = 0;  // of the bytes in hand, so that a line that trickles in is not searched again and again
    for (;;) {
        const char* start = buffer_.get() + begin_;
        const size_t length = end_ - begin_;
        if (const void* newline = std::memchr(start + searched, '\n', length - searched)) {
            return take(static_cast<size_t>(static_cast<const char*>(newline) - start), true);
        }
        if (length == kCapacity) {
            inLongLine_ = true;
            return take(length, false);
        }
        searched = length;
        if (!fill()) return length > 0 && !file_.isCutOff() ? take(length, false) : Found::End;
    }
}

bool LineReader::nextPart() {
    if (!inLongLine_) return false;
    if (begin_ == end_ && !fill()) {
        inLongLine_ = false;
        return false;
    }
    const char* start = buffer_.get() + begin_;
    const void* newline = std::memchr(start, '\n', end_ - begin_);
    inLongLine_ = newline == nullptr;
    take(newline ? static_cast<size_t>(static_cast<const char*>(newline) - start) : end_ - begin_, newline != nullptr);
    return !text_.empty();
}

/// Reads more behind what is in hand; false at the end of the file.
bool LineReader::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    const size_t count = file_.read(buffer_.get() + end_, kCapacity - end_);
    end_ += count;
    return count > 0;
}

LineReader::Found LineReader::take(size_t length, bool newlineFollows) {
    text_ = {buffer_.get() + begin_, length};
    const size_t taken = length + (newlineFollows ? 1 : 0);
    if (!inLongLine_) buffer_[begin_ + length] = '\0';
    begin_ += taken;
    if (bytesRead_ == 0) skipByteOrderMark();
    bytesRead_ += taken;
    return text_.size() > kMaxLineLength ? Found::LongLine : Found::Line;
}

void LineReader::skipByteOrderMark() {
    if (text_.starts_with(kByteOrderMark)) text_.remove_prefix(kByteOrderMark.size());
}

}  // namespace Velo::OS::Telemetry::replay
