#pragma once

#include <json/value.h>

#include <cstddef>
#include <string>
#include <vector>

#include "replay/InputFile.h"

namespace Velo::OS::Telemetry::replay {

/// The rest of the file without a byte order mark. Throws `FileError`, also if that is longer than `maxBytes`.
std::string readText(InputFile& file, size_t maxBytes);

/// The value of a text that was read from the file. Throws `FileError`, "FILE:LINE: not JSON: column 3: ...".
Json::Value parseJson(const std::string& text, const std::string& fileName);

/// A file that is one JSON value, with the lines on which the parts of it stand.
class JsonFile {
public:
    static constexpr size_t kMaxBytes = 1 << 20;

    /// Reads the rest of the file. Throws `FileError`, also if that is longer than `kMaxBytes`.
    explicit JsonFile(InputFile& file);
    /// Of the file's name, as errors show it, and its content. Throws `FileError`.
    JsonFile(std::string name, const std::string& text);

    const std::string& name() const { return name_; }
    const Json::Value& root() const { return root_; }
    /// Where the value, the root or a part of it, begins. Lines count from 1.
    size_t lineOf(const Json::Value& value) const;

private:
    std::string name_;
    Json::Value root_;
    std::vector<std::ptrdiff_t> newlines_;  // their offsets
};

}  // namespace Velo::OS::Telemetry::replay
