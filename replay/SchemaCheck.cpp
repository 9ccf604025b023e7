#include "replay/SchemaCheck.h"

#include <json/value.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "replay/StoredKeyValues.h"
#include "replay/StrictJson.h"
#include "replay/Suggestion.h"
#include "telemetry/EventSchemaHandler.h"

namespace Velo::OS::Telemetry::replay {

namespace {

using Schema = EventSchemaHandler;
using Codes = std::unordered_set<int32_t>;

constexpr char kNoHash[] = "expected 64 lower-case hexadecimal digits";

constexpr IEventSchemaHandler::EventCategory kCategories[] = {
    IEventSchemaHandler::EventCategory::Essential,
    IEventSchemaHandler::EventCategory::NonEssential,
    IEventSchemaHandler::EventCategory::NonEssentialWithOtherConsent,
    IEventSchemaHandler::EventCategory::NeedsReview,
    IEventSchemaHandler::EventCategory::Uncategorized,
    IEventSchemaHandler::EventCategory::Invalid,
};

/// A value of the document and the path to it.
struct Node {
    const Json::Value& value;
    std::string path;
};

bool isHash(const Json::Value& value) {
    if (!value.isString()) return false;
    const std::string text = value.asString();
    return text.size() == 64 && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

/// The code that a device takes it for.
std::optional<int32_t> codeOf(const Json::Value& value) {
    try {
        return value.asInt();
    } catch (const Json::Exception&) {
        return std::nullopt;
    }
}

class SchemaChecker {
public:
    explicit SchemaChecker(const std::string& text) {
        for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; ++at) newlines_.push_back(at);
    }

    SchemaReport check(const Json::Value& document) {
        const Node root{document, {}};
        if (document.isObject()) {
            checkObject(root);
        } else {
            problem(root, "expected an object");
        }
        keepFirstProblems();
        return std::move(report_);
    }

private:
    void checkObject(const Node& root) {
        checkNames(root, {Schema::kKeyTimestamp, Schema::kKeySalt, Schema::kJsonKeySettingsToCategories,
                          Schema::kJsonKeyAllowedEvents, Schema::kJsonKeyAllowedCampaigns});
        checkTimestamp(root);
        checkSalt(root);
        readCodes(root);
        for (const char* entries : {Schema::kJsonKeyAllowedEvents, Schema::kJsonKeyAllowedCampaigns}) {
            forEach(member(root, entries), [&](const Node& entry) { checkEntry(entry); });
        }
        for (const auto category : kCategories) {
            const std::string name = Schema::getEventCategoryStr(category);
            report_.entriesByCategory.emplace_back(name, entriesByCategory_[name]);
        }
    }

    void problem(const Node& node, const std::string& text) {
        const auto start = static_cast<size_t>(node.value.getOffsetStart());
        const auto line = std::lower_bound(newlines_.begin(), newlines_.end(), start);
        report_.problems.push_back(
            {static_cast<size_t>(line - newlines_.begin()) + 1, (node.path.empty() ? "" : node.path + ": ") + text});
        ++report_.problemCount;
        if (report_.problems.size() == 2 * SchemaReport::kMaxProblems) keepFirstProblems();
    }

    /// They are not found in the order of their lines.
    void keepFirstProblems() {
        std::stable_sort(report_.problems.begin(), report_.problems.end(),
                         [](const auto& a, const auto& b) { return a.line < b.line; });
        report_.problems.resize(std::min(report_.problems.size(), SchemaReport::kMaxProblems));
    }

    static std::string pathOf(const Node& parent, const std::string& name) {
        return parent.path.empty() ? name : parent.path + "." + name;
    }

    /// The member of that name, if the object has one.
    static std::optional<Node> optionalMember(const Node& parent, const std::string& name) {
        if (!parent.value.isMember(name)) return std::nullopt;
        return Node{parent.value[name], pathOf(parent, name)};
    }

    std::optional<Node> member(const Node& parent, const std::string& name) {
        std::optional<Node> found = optionalMember(parent, name);
        if (!found) problem({parent.value, pathOf(parent, name)}, "missing");
        return found;
    }

    void checkNames(const Node& parent, std::initializer_list<std::string_view> known) {
        for (const std::string& name : parent.value.getMemberNames()) {
            const bool isComment =
                (name == "//" || (name == "$schema" && parent.path.empty())) && parent.value[name].isString();
            if (isComment || std::find(known.begin(), known.end(), name) != known.end()) continue;
            const std::vector<std::string_view> names(known);
            problem(*optionalMember(parent, name), "unknown member; ignored" + didYouMean(name, names));
        }
    }

    bool isArray(const Node& node) {
        if (node.value.isArray()) return true;
        problem(node, "expected an array; taken as empty");
        return false;
    }

    bool isObject(const Node& node) {
        if (node.value.isObject()) return true;
        problem(node, "expected an object; taken as missing");
        return false;
    }

    template <typename Use>
    void forEach(const std::optional<Node>& array, Use use) {
        if (!array || !isArray(*array)) return;
        for (Json::ArrayIndex i = 0; i < array->value.size(); ++i) {
            use(Node{array->value[i], array->path + "[" + std::to_string(i) + "]"});
        }
    }

    Codes codesOf(const std::optional<Node>& array) {
        Codes codes;
        forEach(array, [&](const Node& code) {
            const std::optional<int32_t> number = codeOf(code.value);
            if (number) codes.insert(*number);
            if (code.value.isInt()) return;
            problem(code, "expected a signed 32-bit integer; " +
                              (number ? "taken as " + std::to_string(*number) : "no code"));
        });
        return codes;
    }

    /// The only code of a list that is to hold just one.
    std::optional<int32_t> singleCodeOf(const std::optional<Node>& array) {
        if (!array || !isArray(*array)) return std::nullopt;
        const bool isOne = array->value.size() == 1;
        const std::optional<int32_t> code = isOne ? codeOf(array->value[0]) : std::nullopt;
        if (!isOne || !array->value[0].isInt()) {
            problem(*array,
                    "expected exactly one signed 32-bit integer; taken as " + (code ? std::to_string(*code) : "empty"));
        }
        return code;
    }

    void checkTimestamp(const Node& root) {
        const std::optional<Node> timestamp = member(root, Schema::kKeyTimestamp);
        if (!timestamp || (isIntegerLiteral(timestamp->value) && timestamp->value.isUInt64())) return;
        problem(*timestamp, "expected an unsigned 64-bit integer; reads back as 0");
    }

    void checkSalt(const Node& root) {
        const std::optional<Node> salt = member(root, Schema::kKeySalt);
        if (!salt || (salt->value.isString() && !salt->value.asString().empty())) return;
        problem(*salt, "expected a text that is not empty");
    }

    void readCodes(const Node& root) {
        const std::optional<Node> lists = member(root, Schema::kJsonKeySettingsToCategories);
        if (!lists || !isObject(*lists)) return;
        checkNames(*lists, {Schema::kCategoryNeedsReview, Schema::kCategoryNonEssentialWithOtherConsent,
                            Schema::kCategoryEssential, Schema::kCategoryNonEssential});
        review_ = singleCodeOf(optionalMember(*lists, Schema::kCategoryNeedsReview));
        const std::optional<Node> otherConsent = optionalMember(*lists, Schema::kCategoryNonEssentialWithOtherConsent);
        otherConsent_ = singleCodeOf(otherConsent);
        if (review_ && review_ == otherConsent_) problem(*otherConsent, "the code for review, which comes first");
        essential_ = codesOf(member(*lists, Schema::kCategoryEssential));
        nonEssential_ = codesOf(member(*lists, Schema::kCategoryNonEssential));
    }

    void checkEntry(const Node& entry) {
        if (!entry.value.isObject()) return problem(entry, "expected an object");
        checkNames(entry,
                   {Schema::kJsonKeyIdentifier, Schema::kJsonKeyCategories, Schema::kJsonKeyExtraDataCategories});
        const std::optional<Node> identifier = member(entry, Schema::kJsonKeyIdentifier);
        if (!identifier) return;
        if (identifier->value.isArray() || identifier->value.isObject()) {
            return problem(*identifier, "expected a text; the entry is passed over");
        }
        const std::string text = identifier->value.asString();
        const auto [first, isNew] = places_.try_emplace(text, identifier->path);
        if (!isNew) problem(*identifier, "the same as " + first->second);
        if (!isHash(identifier->value)) problem(*identifier, kNoHash);
        checkCategory(entry);
        checkPurpose(entry);
    }

    void checkCategory(const Node& entry) {
        const std::optional<Node> list = member(entry, Schema::kJsonKeyCategories);
        const Codes codes = codesOf(list);
        const bool hasOther =
            list && list->value.isArray() && !std::all_of(list->value.begin(), list->value.end(), codeOf);
        const std::string category =
            hasOther ? Schema::kCategoryInvalid
                     : rules_.getCategoryFromCodes(codes, review_, otherConsent_, essential_, nonEssential_);
        ++entriesByCategory_[category];
        if (category != Schema::kCategoryInvalid) return;
        if (review_ && codes.count(*review_) > 0) {
            return problem(*list, "a review code among others makes the entry INVALID");
        }
        forEach(list, [&](const Node& code) {
            const std::optional<int32_t> number = codeOf(code.value);
            if (!number || essential_.count(*number) + nonEssential_.count(*number) > 0) return;
            problem(code, "neither ESSENTIAL nor NON_ESSENTIAL, which makes the entry INVALID");
        });
    }

    void checkPurpose(const Node& entry) {
        const std::optional<Node> extra = optionalMember(entry, Schema::kJsonKeyExtraDataCategories);
        if (!extra || !isObject(*extra)) return;
        checkNames(*extra, {Schema::kJsonKeyGranular});
        forEach(optionalMember(*extra, Schema::kJsonKeyGranular), [&](const Node& purpose) {
            if (!isHash(purpose.value)) problem(purpose, kNoHash);
        });
    }

    std::vector<size_t> newlines_;  // offsets in the document
    SchemaReport report_;
    StoreFile nothing_{std::nullopt};
    const EventSchemaHandler rules_{std::make_shared<StoredKeyValues>(nothing_)};
    std::optional<int32_t> review_, otherConsent_;
    Codes essential_, nonEssential_;
    std::unordered_map<std::string, std::string> places_;  // of identifiers
    std::unordered_map<std::string, uint64_t> entriesByCategory_;
};

}  // namespace

SchemaReport checkSchema(const std::string& text) {
    Json::Value document;
    if (const auto fault = StrictJson().parse(text, document)) return {1, {{fault->line, fault->text}}, {}};
    return SchemaChecker(text).check(document);
}

}  // namespace Velo::OS::Telemetry::replay
