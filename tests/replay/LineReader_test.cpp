#include "replay/LineReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

namespace Velo::OS::Telemetry::replay {

constexpr size_t kMax = LineReader::kMaxLineLength;

/// What a reader found, one text a line: its number, "long" if it is, and its contents, a run of x's as its length.
std::vector<std::string> read(const std::string& content, bool readLongLines = true) {
    int ends[2];
    if (::pipe(ends) != 0) return {"no pipe"};
    // A pipe hands out little at a time, so lines arrive in pieces.
    std::thread writer([&] {
        EXPECT_EQ(::write(ends[1], content.data(), content.size()), static_cast<ssize_t>(content.size()));
        ::close(ends[1]);
    });
    InputFile file("/proc/self/fd/" + std::to_string(ends[0]));
    ::close(ends[0]);

    LineReader reader(file);
    std::vector<std::string> found;
    for (auto next = reader.next(); next != LineReader::Found::End; next = reader.next()) {
        std::string text(reader.text());
        const bool isLong = next == LineReader::Found::LongLine;
        EXPECT_TRUE(isLong || *reader.text().end() == '\0');
        while (isLong && readLongLines && reader.nextPart()) text += reader.text();
        const bool isRun = text.size() > 100 && text == std::string(text.size(), 'x');
        found.push_back(std::to_string(reader.lineNumber()) + (isLong ? " long " : " ") +
                        (isRun ? std::to_string(text.size()) : text));
    }
    writer.join();
    EXPECT_EQ(reader.bytesRead(), content.size());
    return found;
}

TEST(LineReader, SplitsAtNewlinesAndHandsOutLongLinesInParts) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(read("a\n\nb\r\n c"), Lines({"1 a", "2 ", "3 b\r", "4  c"}));
    EXPECT_EQ(read("\xEF\xBB\xBF{}\n\xEF\xBB\xBF{}\n"), Lines({"1 {}", "2 \xEF\xBB\xBF{}"}));
    const std::string longest(kMax, 'x');
    EXPECT_EQ(read(longest), Lines({"1 1048576"}));
    EXPECT_EQ(read("\xEF\xBB\xBF" + longest + "\n" + longest + "\nb"), Lines({"1 1048576", "2 1048576", "3 b"}));
    // One byte too many, and each length around that of the reader's buffer.
    for (size_t excess = 1; excess <= 6; ++excess) {
        const std::string tooLong(kMax + excess, 'x');
        const std::string found = "1 long " + std::to_string(kMax + excess);
        EXPECT_EQ(read(tooLong), Lines({found})) << excess;
        EXPECT_EQ(read(tooLong + "\nb"), Lines({found, "2 b"})) << excess;
        EXPECT_EQ(read("\xEF\xBB\xBF" + tooLong + "\n\n"), Lines({found, "2 "})) << excess;
    }
    const std::string huge(3 * kMax, 'x');
    EXPECT_EQ(read("a\n" + huge + "\nb\n"), Lines({"1 a", "2 long 3145728", "3 b"}));
    EXPECT_EQ(read(huge + "\nb\n", false).back(), "2 b");
}

}  // namespace Velo::OS::Telemetry::replay
