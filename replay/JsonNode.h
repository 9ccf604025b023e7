#pragma once

#include <json/value.h>

#include <charconv>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "replay/JsonFile.h"

namespace Velo::OS::Telemetry::replay {

/// A value that a reader has come upon.
struct ReadValue {
    std::string path;    // in its file, "users.0.consent", with long names cut short
    std::string value;   // compact JSON
    std::string source;  // "FILE:LINE", or "default" if the file does not have it
};

/// A value of a JSON file and the place where it stands, for readers that know what they expect there. Each operation
/// throws `FileError` if the value is something else: "FILE:LINE: path.to[0].it: expected a string". Long names are cut
/// short in it.
///
/// A field that its object lacks is a node too, an absent one: to read it leaves the variable as it is. Thus a reader
/// visits all that could be in the file, and can have it listed.
///
/// Nodes live while the file and the nodes around them do: each is lent to those who use it, and none can be kept.
class JsonNode {
public:
    using Use = std::function<void(const JsonNode&)>;

    struct Field {
        const char* name;
        Use use;
    };

    /// The file's root. Both arguments are lent; whatever is read is appended to the list, if there is one.
    explicit JsonNode(const JsonFile& file, std::vector<ReadValue>* list = nullptr)
        : context_{&file, list}, value_(&file.root()) {}
    JsonNode(const JsonNode&) = delete;

    [[noreturn]] void fail(const std::string& reason) const;
    /// Where the value is, for errors that are found later: "FILE:LINE: path.to[0].it".
    std::string where() const;

    /// The value as compact JSON, null if it is absent.
    std::string text() const;

    void read(bool& out) const;
    void read(std::string& out) const;
    void read(int32_t& out) const { readInteger(out); }
    void read(int64_t& out) const { readInteger(out); }
    void read(uint32_t& out) const { readInteger(out); }
    void read(uint64_t& out) const { readInteger(out); }
    void read(double& out) const;
    void read(Json::Value& out) const;
    /// An absent one is listed as null if it has no default.
    template <typename T>
    void read(std::optional<T>& out) const {
        if (value_) out.emplace();
        if (out) return read(*out);
        list({});
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

    /// Leaves alone what is absent, and lists it as null.
    void readIfPresent(const Use& use) const;

    bool isArray() const { return value_ && value_->isArray(); }
    bool isObject() const { return value_ && value_->isObject(); }

    /// An object with these fields and no others but "//", a comment, and in the root "$schema", both of which are
    /// strings. Visits each field, in this order, be it there or absent.
    void object(const std::vector<Field>& fields) const;
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
    struct Context {
        const JsonFile* file;
        std::vector<ReadValue>* list;  // may be null
    };

    /// From a node to one in it. A name is lent.
    using Step = std::variant<std::string_view, Json::ArrayIndex>;

    JsonNode(const JsonNode& parent, Step step, const Json::Value* value)
        : context_(parent.context_), parent_(&parent), step_(step), value_(value) {}

    void requireObject() const;
    void checkMembers(const std::vector<Field>& fields) const;
    std::string path() const;
    std::string place() const;
    void list(const Json::Value& value) const;
    template <typename Integer>
    void readInteger(Integer& out) const;
    template <typename Integer>
    static std::string nameOf() {
        return std::string(std::numeric_limits<Integer>::is_signed ? "a signed " : "an unsigned ") +
               std::to_string(std::numeric_limits<std::make_unsigned_t<Integer>>::digits) + "-bit integer";
    }

    const Context context_;
    const JsonNode* const parent_ = nullptr;  // null: it is the root
    const Step step_;                         // from there
    const Json::Value* const value_;          // null if it is absent
};

/// Reads a field into a variable, which is lent.
template <typename T>
JsonNode::Use into(T& out) {
    return [&out](const JsonNode& node) { node.read(out); };
}

/// Has a field used only if it is there.
template <typename Use>
JsonNode::Use ifPresent(Use use) {
    return [use = std::move(use)](const JsonNode& node) { node.readIfPresent(use); };
}

}  // namespace Velo::OS::Telemetry::replay
