#include "conversion/JsonNumber.h"

namespace Velo::OS::Telemetry {

std::optional<int64_t> toInt64(const Json::Value& value) {
    constexpr double kTwoTo63 = 9223372036854775808.0;
    switch (value.type()) {
        case Json::intValue:
            return value.asInt64();
        case Json::uintValue:
            if (value.asUInt64() > static_cast<uint64_t>(INT64_MAX)) return std::nullopt;
            return value.asInt64();
        case Json::realValue: {
            const double number = value.asDouble();
            if (!(number >= -kTwoTo63 && number < kTwoTo63)) return std::nullopt;
            return static_cast<int64_t>(number);
        }
        default:
            return std::nullopt;
    }
}

}  // namespace Velo::OS::Telemetry
