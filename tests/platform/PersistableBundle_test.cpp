#include <gtest/gtest.h>

#include "tests/fakes/Payloads.h"

namespace Velo::OS::Telemetry {

using android::String16;
using fakes::Bundle;

/// One bundle and one key, whose value is replaced by one of another type again and again.
struct OneKey {
    const String16 key{"k"};
    Bundle bundle;

    template <typename T, typename Put>
    void replaceBy(Put put, bool (Bundle::*get)(const String16&, T*) const, std::set<String16> (Bundle::*keys)() const,
                   const T& value) {
        T out{};
        EXPECT_FALSE((bundle.*get)(key, &out) || out != T{}) << "another type holds the key; nothing is written";
        for (int i = 0; i < 2; ++i) (bundle.*put)(key, value);  // over another type, then over itself
        EXPECT_TRUE((bundle.*get)(key, &out) && out == value);
        EXPECT_EQ((bundle.*keys)().count(key), 1U);
        EXPECT_EQ(bundle.size(), 1U) << "what the key held before is gone";
    }
};

TEST(PersistableBundle, AKeyHoldsOneTypeAtATime) {
    OneKey k;
    for (int round = 0; round < 2; ++round) {
        k.replaceBy<bool>(&Bundle::putBoolean, &Bundle::getBoolean, &Bundle::getBooleanKeys, true);
        k.replaceBy<int32_t>(&Bundle::putInt, &Bundle::getInt, &Bundle::getIntKeys, -5);
        k.replaceBy<int64_t>(&Bundle::putLong, &Bundle::getLong, &Bundle::getLongKeys, INT64_MIN);
        k.replaceBy<double>(&Bundle::putDouble, &Bundle::getDouble, &Bundle::getDoubleKeys, 0.5);
        k.replaceBy(&Bundle::putString, &Bundle::getString, &Bundle::getStringKeys, String16("s"));
        k.replaceBy(&Bundle::putBooleanVector, &Bundle::getBooleanVector, &Bundle::getBooleanVectorKeys,
                    std::vector<bool>{true});
        k.replaceBy(&Bundle::putIntVector, &Bundle::getIntVector, &Bundle::getIntVectorKeys, std::vector<int32_t>{1});
        k.replaceBy(&Bundle::putLongVector, &Bundle::getLongVector, &Bundle::getLongVectorKeys,
                    std::vector<int64_t>{2});
        k.replaceBy(&Bundle::putDoubleVector, &Bundle::getDoubleVector, &Bundle::getDoubleVectorKeys,
                    std::vector<double>{3});
        k.replaceBy(&Bundle::putStringVector, &Bundle::getStringVector, &Bundle::getStringVectorKeys,
                    std::vector<String16>{String16("s")});
        k.replaceBy(&Bundle::putPersistableBundle, &Bundle::getPersistableBundle, &Bundle::getPersistableBundleKeys,
                    fakes::bundleOf(R"({"i":1})"));
    }
    EXPECT_FALSE(k.bundle.empty());
    EXPECT_EQ(k.bundle.erase(k.key), 1U);
    EXPECT_EQ(k.bundle.erase(k.key), 0U);
    EXPECT_TRUE(k.bundle.empty());
}

}  // namespace Velo::OS::Telemetry
