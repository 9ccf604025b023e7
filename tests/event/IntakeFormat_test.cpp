#include "telemetry/IntakeFormat.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/fakes/LogCapture.h"

namespace Velo::OS::Telemetry {

using enum IntakeFormat;

TEST(IntakeFormat, AtomIdsFallIntoRanges) {
    const struct {
        int id;
        IntakeFormat format;
    } cases[] = {{INT_MIN, SpecificAtom}, {-115000, SpecificAtom}, {-1, SpecificAtom},     {0, SpecificAtom},
                 {1, SpecificAtom},       {2, AndroidAtom},        {99999, AndroidAtom},   {100000, SpecificAtom},
                 {111221, SpecificAtom},  {111222, GenericAtom},   {111223, SpecificAtom}, {114999, SpecificAtom},
                 {115000, HalAtom},       {119999, HalAtom},       {120000, NestedAtom},   {129999, NestedAtom},
                 {130000, SpecificAtom},  {INT_MAX, SpecificAtom}};
    for (const auto& c : cases) EXPECT_EQ(getAtomIntakeFormat(c.id), c.format) << c.id;
}

TEST(IntakeFormat, PathwaysAreKnownByTheirExactName) {
    fakes::LogCapture log;
    EXPECT_EQ(getIntakeFormatFromLoggingPathway("libtelemetry"), Libtelemetry);
    EXPECT_EQ(getIntakeFormatFromLoggingPathway("osndk"), OsNdk);
    EXPECT_EQ(log.take(), std::vector<std::string>());
    EXPECT_EQ(getIntakeFormatFromLoggingPathway("LibTelemetry%s"), std::nullopt);
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 TelemetryService: Unknown logging pathway LibTelemetry%s"});
}

TEST(IntakeFormat, NamesAndValues) {
    const char* const names[] = {"JSON Bundle",  "Libtelemetry", "OSNDK",    "Specific Atom",
                                 "Generic Atom", "Nested Atom",  "HAL Atom", "Android Atom"};
    const IntakeFormat formats[] = {JsonBundle,  Libtelemetry, OsNdk,   SpecificAtom,
                                    GenericAtom, NestedAtom,   HalAtom, AndroidAtom};
    for (int32_t value = 0; value < 8; ++value) {
        EXPECT_EQ(static_cast<int32_t>(formats[value]), value);
        EXPECT_EQ(getFormatName(formats[value]), names[value]);
        EXPECT_EQ(isFormatJsonBundle(formats[value]), value < 3) << value;
    }
}

}  // namespace Velo::OS::Telemetry
