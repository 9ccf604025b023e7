#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Velo::OS::Telemetry::replay {

/// What a device would make of an event schema.
struct SchemaReport {
    /// Something that would be dropped or misread.
    struct Problem {
        size_t line;  // of the document, counted from 1
        std::string text;
    };

    static constexpr size_t kMaxProblems = 1000;

    uint64_t problemCount = 0;      // all that there are
    std::vector<Problem> problems;  // the first of them, at most `kMaxProblems`, in the order of their lines
    std::vector<std::pair<std::string, uint64_t>> entriesByCategory;
};

SchemaReport checkSchema(const std::string& text);

}  // namespace Velo::OS::Telemetry::replay
