// Any text as JSON, stored in a bundle and read back.

#include "fuzz/JsonProperties.h"
#include "fuzz/Lines.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Velo::OS::Telemetry;
    constexpr unsigned kMaxDepth = 64;  // of what is put into bundles, which are copied at each level

    const std::string text(fuzz::textOf(data, size));
    Json::Value value;
    const bool isRead = getJsonFromString(text.c_str(), value);
    const std::optional<Json::Value> expected = fuzz::jsoncppValue(text.c_str());
    fuzz::require(isRead == expected.has_value(), "What jsoncpp reads by default is read", text);
    if (!isRead) return 0;
    fuzz::require(value == *expected, "It is read as jsoncpp reads it", text);
    if (fuzz::depthOf(value) > kMaxDepth) return 0;
    fuzz::requireWrittenLikeJsoncpp(value);
    fuzz::requireSurvivesBundle(value);
    return 0;
}
