#include "telemetry/KeyValueDispatch.h"

#include <gtest/gtest.h>

#include "tests/fakes/FakeStorageCache.h"

namespace Velo::OS::Telemetry {

TEST(KeyValueDispatch, ForwardsForItsStoreAndReturnsWhatTheCacheDoes) {
    const auto cache = std::make_shared<fakes::FakeStorageCache>();
    const KeyValueDispatch dispatch(Store::EventSchema, "event_schema", cache);
    const auto otherKind = static_cast<Store>(3);
    cache->values = {{{otherKind, "event_schema", "k1"}, "v"}, {{Store::EventSchema, "other", "k2"}, "v"}};

    EXPECT_TRUE(dispatch.setValue("k", "v"));
    EXPECT_EQ((cache->values.at({static_cast<Store>(4), "event_schema", "k"})), "v");
    EXPECT_EQ(dispatch.getValue("k", "default"), "v");
    EXPECT_EQ(dispatch.getValue("k1", "default"), "default");
    std::unordered_set<std::string> keys;
    EXPECT_TRUE(dispatch.listKeys(keys));
    EXPECT_EQ(keys, std::unordered_set<std::string>{"k"});

    cache->works = false;
    EXPECT_FALSE(dispatch.setValue("k", "w"));
    EXPECT_FALSE(dispatch.removeValue("k"));
    EXPECT_FALSE(dispatch.listKeys(keys));
    cache->works = true;
    EXPECT_TRUE(dispatch.removeValue("k"));
    EXPECT_EQ(cache->values.size(), 2U);
}

}  // namespace Velo::OS::Telemetry
