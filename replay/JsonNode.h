#pragma once

#include <json/value.h>

#include <charconv>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace Velo::OS::Telemetry::replay {

/// A value of a JSON file and the place where it stands, for readers that know what they expect there. Each operation
/// throws `FileError` if the value is something else: "FILE: path.to[0].it: expected a string".
class JsonNode {
public:
    using Use = std::function<void(const JsonNode&)>;

    struct Field {
        const char* name;
        Use use;
    };

    /// The value is lent.
    JsonNode(const Json::Value& value, const std::string& file) : JsonNode(value, file, {}) {}

    [[noreturn]] void fail(const std::string& reason) const;

    void read(bool& out) const;
    void read(std::string& out) const;
    void read(int32_t& out) const { readInteger(out); }
    void read(int64_t& out) const { readInteger(out); }
    void read(uint32_t& out) const { readInteger(out); }
    void read(uint64_t& out) const { readInteger(out); }
    void read(double& out) const;
    void read(Json::Value& out) const { out = value_; }
    template <typename T>
    void read(std::optional<T>& out) const {
        read(out.emplace());
    }
    /// An array. An element may occur twice.
    template <typename T>
    void read(std::set<T>& out) const {
        elements([&](const JsonNode& element) {
            T item{};
            element.read(item);
            out.insert(std::move(item));
        });
    }
    /// Members by name.
    template <typename T>
    void read(std::map<std::string, T>& out) const {
        members([&](const std::string& name, const JsonNode& member) { member.read(out[name]); });
    }
    /// Members by number.
    template <typename Integer, typename T>
    void read(std::map<Integer, T>& out) const {
        numbered<Integer>([&](Integer number, const JsonNode& member) { member.read(out[number]); });
    }

    bool isArray() const { return value_.isArray(); }

    /// An object with these fields and no others. Each may be absent.
    void object(std::initializer_list<Field> fields) const;
    /// An object with members of any name.
    void members(const std::function<void(const std::string&, const JsonNode&)>& use) const;
    /// An object with numbers for names, each in its shortest form.
    template <typename Integer>
    void numbered(const std::function<void(Integer, const JsonNode&)>& use) const {
        members([&](const std::string& name, const JsonNode& member) {
            Integer number{};
            std::from_chars(name.data(), name.data() + name.size(), number);
            if (std::to_string(number) != name) member.fail("expected the name to be " + nameOf<Integer>());
            use(number, member);
        });
    }
    void elements(const Use& use) const;

private:
    JsonNode(const Json::Value& value, const std::string& file, std::string path)
        : value_(value), file_(file), path_(std::move(path)) {}

    template <typename Integer>
    void readInteger(Integer& out) const;
    template <typename Integer>
    static std::string nameOf() {
        return std::string(std::numeric_limits<Integer>::is_signed ? "a signed " : "an unsigned ") +
               std::to_string(std::numeric_limits<std::make_unsigned_t<Integer>>::digits) + "-bit integer";
    }

    const Json::Value& value_;
    const std::string& file_;
    const std::string path_;
};

/// Reads a field into a variable, which is lent.
template <typename T>
JsonNode::Use into(T& out) {
    return [&out](const JsonNode& node) { node.read(out); };
}

}  // namespace Velo::OS::Telemetry::replay
