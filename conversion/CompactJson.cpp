#include "conversion/CompactJson.h"

#include <json/writer.h>

#include <memory>
#include <ostream>
#include <streambuf>

#include "conversion/PerThread.h"

namespace Velo::OS::Telemetry {

namespace {

/// Appends what is written to a string.
class StringBuffer : public std::streambuf {
public:
    std::string text;

private:
    int_type overflow(int_type character) override {
        if (!traits_type::eq_int_type(character, traits_type::eof())) text += traits_type::to_char_type(character);
        return traits_type::not_eof(character);
    }

    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        text.append(bytes, static_cast<size_t>(count));
        return count;
    }
};

class CompactWriter {
public:
    CompactWriter() : stream_(&buffer_) {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        writer_.reset(builder.newStreamWriter());
        stream_.exceptions(std::ios::badbit);  // a text cut short for want of memory must not pass for a whole one
    }

    std::string write(const Json::Value& value) {
        buffer_.text.clear();
        stream_.clear();
        writer_->write(value, &stream_);
        // An exact copy, so that the cached text of an event wastes nothing and the buffer need not grow again.
        std::string text = buffer_.text;
        if (buffer_.text.capacity() > kKeptCapacity) buffer_.text = std::string();
        return text;
    }

private:
    /// Bytes that a thread keeps; a single huge event must not hold memory for ever.
    static constexpr size_t kKeptCapacity = 65536;

    StringBuffer buffer_;
    std::ostream stream_;
    std::unique_ptr<Json::StreamWriter> writer_;
};

}  // namespace

std::string toCompactJson(const Json::Value& value) {
    return withThreadsOwn<CompactWriter>([&](CompactWriter& writer) { return writer.write(value); });
}

}  // namespace Velo::OS::Telemetry
