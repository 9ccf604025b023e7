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

    std::vector<Problem> problems;  // in the order of their lines
    std::vector<std::pair<std::string, uint64_t>> entriesByCategory;
};

SchemaReport checkSchema(const std::string& text);

}  // namespace Velo::OS::Telemetry::replay
