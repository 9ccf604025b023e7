#include "replay/LineBatch.h"

#include "replay/Interruption.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// A batch that has so many bytes takes no further line.
constexpr size_t kEnoughBytes = 131'072;

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

void LineBatch::begin(const std::string& file) {
    file_ = file;
    text_.clear();
    lines_.clear();
}

void LineBatch::add(uint64_t number, std::string_view text) {
    lines_.push_back({number, text_.size(), text.size()});
    text_ += text;
    text_ += '\0';
}

BatchReader::Found BatchReader::next(LineBatch& batch) {
    while (file_ < files_.size()) {
        if (!reader_) open();
        const Found found = take(batch);
        if (found != Found::End || isCutOff()) return found;
        bytesBefore_ += reader_->bytesRead();
        reader_.reset();
        ++file_;
    }
    return Found::End;
}

void BatchReader::open() {
    reader_.emplace(files_[file_]);
    longLineWaits_ = false;
}

/// End if the file in hand has no more lines.
BatchReader::Found BatchReader::take(LineBatch& batch) {
    batch.begin(files_[file_].name());
    while (batch.lines().size() < maxLines_ && batch.bytes() < kEnoughBytes && interruption() == 0) {
        if (!batch.lines().empty() && !reader_->hasLine()) break;
        const LineReader::Found found = longLineWaits_ ? LineReader::Found::LongLine : reader_->next();
        longLineWaits_ = found == LineReader::Found::LongLine && !batch.lines().empty();
        if (found == LineReader::Found::End || longLineWaits_) break;
        if (found == LineReader::Found::LongLine) return Found::LongLine;
        if (!isBlank(reader_->text())) batch.add(reader_->lineNumber(), reader_->text());
    }
    return batch.lines().empty() ? Found::End : Found::Lines;
}

}  // namespace Velo::OS::Telemetry::replay
