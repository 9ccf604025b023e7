#include "replay/EventDecoder.h"

#include <gtest/gtest.h>

#include "replay/BundleFromJson.h"
#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry::replay {

std::string nested(size_t levels, const std::string& innermost = "") {
    return std::string(levels, '[') + innermost + std::string(levels, ']');
}

TEST(EventDecoder, MakesEventsOfLines) {
    const struct {
        const char* line;
        std::string event;  // name, uid, format and data
    } cases[] = {
        {R"({"name":"a","data":{}})", R"(a 1000 JSON Bundle {"realtime":false})"},
        {R"( {"uid":4294967295,"name":"","format":"json","data":{"k":[1.0,{}]}} )",
         R"( 4294967295 JSON Bundle {"k":[1.0,{}],"realtime":false})"},
        {R"({"name":"a","data":{"k":[-0,-0.0,1E2,9223372036854775807,18446744073709551615,null,"\"\n"]}})",
         R"(a 1000 JSON Bundle {"k":[0,-0.0,100.0,9223372036854775807,18446744073709551615,null,"\"\n"],)"
         R"("realtime":false})"},
        {R"({"name":"a","format":"libtelemetry","data":{"realtime":true}})",
         R"(a 1000 Libtelemetry {"realtime":false})"},
        {R"({"name":"a","format":"osndk","data":{}})", R"(a 1000 OSNDK {"realtime":false})"},
        {R"({"name":"a","format":"atom","atom_id":111222,"data":{}})", R"(a 1000 Generic Atom {"realtime":false})"},
        {R"({"name":"a","format":"atom","atom_id":-2147483648,"data":{}})",
         R"(a 1000 Specific Atom {"realtime":false})"},
        {R"({"name":"\u0000\u00e9\ud83d\ude00","uid":0,"bundle":{}})",
         std::string(1, '\0') + "\xC3\xA9\xF0\x9F\x98\x80 0 JSON Bundle {\"realtime\":false}"},
        {R"({"name":"a","bundle":{"k":1e19}})", R"(a 1000 JSON Bundle {"k":1e+19,"realtime":false})"},
        {R"({"name":"a","realtime":true,"format":"json","bundle":{"utl_logging_pathway":"osndk","o":{"k":1.5}}})",
         R"(a 1000 OSNDK {"o":{"k":1.5},"realtime":true,"utl_logging_pathway":"osndk"})"},
    };
    EventDecoder decoder;
    for (const auto& c : cases) {
        auto decoded = decoder.decode(c.line);
        ASSERT_EQ(decoded.index(), 0U) << c.line << ": " << std::get<LineError>(decoded).text;
        TelemetryEventBundle& event = *std::get<0>(decoded);
        EXPECT_EQ(event.name() + " " + std::to_string(event.uid()) + " " + getFormatName(event.getIntakeFormat()) +
                      " " + event.getJsonString(),
                  c.event);
    }
    const std::string deepest = R"({"name":"a","data":{"\"[[":)" + nested(62, "1") + "}}";
    EXPECT_EQ(decoder.decode(deepest).index(), 0U);

    ASSERT_EQ(decoder.decode(R"({"name":"a","data":{},"dropped":{}})").index(), 0U);
    EXPECT_NE(decoder.earlierDrop(), nullptr);
    ASSERT_EQ(decoder.decode(cases[0].line).index(), 0U);
    EXPECT_EQ(decoder.earlierDrop(), nullptr);
}

TEST(EventDecoder, NamesWhatIsWrongWithALine) {
    const std::pair<std::string, std::string> cases[] = {
        {"5", "expected an object"},
        {R"({"data":{}})", "name: missing"},
        {R"({"name":5,"data":{}})", "name: expected a string"},
        {R"({"name":"a","nmae":1})", R"(nmae: unknown member; did you mean "name"?)"},
        {R"({"name":"a","uid":-1,"data":{}})", "uid: expected an unsigned 32-bit integer"},
        {R"({"name":"a","uid":4294967296,"data":{}})", "uid: expected an unsigned 32-bit integer"},
        {R"({"name":"a","uid":1.0,"data":{}})", "uid: expected an unsigned 32-bit integer"},
        {R"({"name":"a","realtime":1,"bundle":{}})", "realtime: expected true or false"},
        {R"({"name":"a","realtime":false,"data":{}})", "realtime: only a bundle event has it"},
        {R"({"name":"a","format":1,"data":{}})", "format: expected a string"},
        {R"({"name":"a","format":"Json","data":{}})",
         R"(format: expected "json", "libtelemetry", "osndk" or "atom"; did you mean "json"?)"},
        {R"({"name":"a","format":"osndk","bundle":{}})",
         "format: a bundle event names its pathway in bundle.utl_logging_pathway"},
        {R"({"name":"a","format":"atom","data":{}})", R"(atom_id: missing, the format "atom" needs it)"},
        {R"({"name":"a","atom_id":1,"data":{}})", R"(atom_id: only the format "atom" has it)"},
        {R"({"name":"a","format":"atom","atom_id":2147483648,"data":{}})", "atom_id: expected a signed 32-bit integer"},
        {R"({"name":"a"})", "data: missing, and there is no bundle either"},
        {R"({"name":"a","data":{},"bundle":{}})", "bundle: cannot be given together with data"},
        {R"({"name":"a","data":[]})", "data: expected an object"},
        {R"({"name":"a","bundle":"x"})", "bundle: expected an object"},
        {R"({"name":"a","bundle":{"a":{"b":[1,"x",null]}}})", "bundle.a.b[2]: null cannot be held by a bundle"},
        {R"({"name":"a","bundle":{"n":9223372036854775808}})",
         "bundle.n: integer does not fit a signed 64-bit integer"},
        {R"({"name":"a","bundle":{"n":18446744073709551616}})",
         "bundle.n: integer does not fit a signed 64-bit integer"},
        {R"({"name":"a","bundle":{"n":[-99999999999999999999]}})",
         "bundle.n[0]: integer does not fit a signed 64-bit integer"},
        {R"({"name":"a","bundle":{"o":{"k\u0000":1}}})",
         std::string("bundle.o.k\0: a key of a bundle cannot hold a NUL", 48)},
        {"{\"name\":\"a\xC0\"}", "not UTF-8: column 11"},
        {R"({"name":"a","data":{}} x)", "not JSON: column 24: Extra non-whitespace after JSON value."},
        {R"({"name":"a","name":"b"})", "not JSON: column 13: Duplicate key: 'name'"},
        {R"({"name":"a","data":{"k":1,"k":1}})", "not JSON: column 27: Duplicate key: 'k'"},
        {R"({"name":"a","data":{},"data":{}})", "not JSON: column 23: Duplicate key: 'data'"},
        {R"({"name":"a" "data":{}})", "not JSON: column 13: Missing ',' or '}' in object declaration"},
        {"{\"name\":\r\"a\" 1}\r", "not JSON: column 14: Missing ',' or '}' in object declaration"},
        {R"({"name":NaN})", "not JSON: column 9: Syntax error: value, object or array expected."},
        {R"({"name":"a//b","data":{} /* c */})", "not JSON: column 26: comment, where a member named \"//\" is wanted"},
        {R"({"name":"\ud800\u0041","data":{}})", "not JSON: column 10: half of a surrogate pair"},
        {R"({"name":"\udc00","data":{}})", "not JSON: column 10: half of a surrogate pair"},
        {R"({"a":"\u12"})", "not JSON: column 6: Bad unicode escape sequence in string: four digits expected."},
        {"{\"a\":\"x\ty\"}", "not JSON: column 8: control character in a string"},
        {std::string("{}\0x", 4), "not JSON: column 3: control character"},
        {R"({"name":"a","data":{"k":)" + nested(63) + "}}", "nested deeper than 64 levels"},
        {nested(5000), "nested deeper than 64 levels"},
    };
    EventDecoder decoder;
    for (const auto& [line, expected] : cases) {
        const auto decoded = decoder.decode(line);
        const auto* error = std::get_if<LineError>(&decoded);
        EXPECT_EQ(error ? error->text : "an event", expected) << line;
    }
}

TEST(EventDecoder, TakesTheNumbersOfJsonAndNoOthers) {
    EventDecoder decoder;
    for (const std::string number : {"0", "-0", "10", "0.5", "-1.25e+3", "1E-9", "0e0"})
        EXPECT_EQ(decoder.decode(R"({"name":"a","data":{"n":)" + number + "}}").index(), 0U) << number;
    for (const std::string number : {"-", "+1", "01", "-01", "1.", ".5", "1e", "1e+", "1.e1", "1.5.5", "--1", "0x1"})
        EXPECT_EQ(decoder.decode(R"({"name":"a","data":{"n":)" + number + "}}").index(), 1U) << number;
}

TEST(BundleFromJson, TypesValuesByTheirNature) {
    const std::string source =
        R"({"b":true,"i":-2147483648,"l":2147483648,"m":-9223372036854775808,"d":1.0,"e":1e2,"s":"x","v":["x","y"],)"
        R"("a":[],"n":["x",2147483647,[["y"],false]],"o":{"k":{}},"z":"a\u0000b\u20ac"})";
    Json::Value object;
    ASSERT_FALSE(StrictJson().parse(source, object));
    android::os::PersistableBundle bundle;
    ASSERT_FALSE(bundleFromJson(object, source, "bundle", bundle));

    android::String16 text;
    ASSERT_TRUE(bundle.getString(android::String16("z"), &text));
    // Its own comparison takes no notice of what follows a NUL.
    EXPECT_EQ(std::u16string(text.string(), text.size()), std::u16string(u"a\0b\u20ac", 4));
    bundle.erase(android::String16("z"));

    EXPECT_EQ(bundle,
              fakes::bundleOf(R"({"b":true,"i":-2147483648,"l":2147483648,"m":-9223372036854775808,"d":1.0,"e":100.0,
        "s":"x","v":["x","y"],"a":{"utl_array_of_bundles":true},"o":{"k":{}},"n":{"utl_array_of_bundles":true,"0":"x",
        "1":2147483647,"2":{"utl_array_of_bundles":true,"0":{"utl_array_of_bundles":true,"0":"y"},"1":false}}})"));
}

}  // namespace Velo::OS::Telemetry::replay
