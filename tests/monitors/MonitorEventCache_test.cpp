#include "telemetry/MonitorEventCache.h"

#include <gtest/gtest.h>

#include <tuple>

namespace Velo::OS::Telemetry {

TEST(MonitorEventCache, KnowsTheLastDecisionOfEachUserAndEvent) {
    const std::tuple<unsigned int, const char*, bool, bool> steps[] = {
        // uid, event, decision, known
        {10, "e", true, false}, {10, "e", true, true},   {10, "e", false, false}, {10, "e", false, true},
        {11, "e", true, false}, {10, "e", false, true},  {10, "g", false, false}, {10, "e", true, false},
        {11, "e", true, true},  {11, "g", false, false}, {10, "g", false, true},
    };
    for (const auto& [uid, event, decision, isKnown] : steps) {
        EXPECT_EQ(MonitorEventCache::checkAndSetFilterDecisionCache(uid, event, decision), isKnown)
            << uid << event << decision;
    }
}

}  // namespace Velo::OS::Telemetry
