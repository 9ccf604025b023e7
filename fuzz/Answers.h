#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "fuzz/JsonProperties.h"

namespace Velo::OS::Telemetry::fuzz {

/// Answers of injected interfaces: each is chosen by the next byte, from the first again after the last.
class Answers {
public:
    explicit Answers(std::string_view bytes) : bytes_(bytes) {}

    bool truth() { return next() % 2 == 1; }

    int64_t number() {
        constexpr int64_t kNumbers[] = {0,     1,         -1,        2,         10123,     9000,
                                        -1000, INT32_MAX, 1LL << 32, 1LL << 53, INT64_MAX, INT64_MIN};
        return choose(kNumbers);
    }

    float rate() {
        using Limits = std::numeric_limits<float>;
        constexpr float kRates[] = {1, 0, 0.5F, 0.01F, -1, Limits::quiet_NaN(), Limits::infinity(), 1e-40F, 1e-19F, 2};
        return choose(kRates);
    }

    std::string text() {
        using namespace std::string_view_literals;
        constexpr std::string_view kTexts[] = {""sv,
                                               "1"sv,
                                               "-1"sv,
                                               " 7 "sv,
                                               "no number"sv,
                                               "com.example.home"sv,
                                               "99999999999999999999"sv,
                                               "a\0b"sv,
                                               "\xFF\xC3"sv,
                                               "\"\\\x01"sv,
                                               "100004217733019"sv,
                                               "id"sv,
                                               "a\xC3\xA9"sv,
                                               "\xED\xA0\x80"sv};
        return std::string(choose(kTexts));
    }

    Json::Value json() {
        constexpr const char* kValues[] = {"null",
                                           "0",
                                           "-1",
                                           "true",
                                           "\"s\"",
                                           "[]",
                                           "{}",
                                           "[1,{\"a\":null}]",
                                           "1e300",
                                           "18446744073709551615",
                                           "{\"utl_array_of_bundles\":[\"x\",2.5]}"};
        return *jsoncppValue(choose(kValues));
    }

private:
    template <typename Value, size_t kCount>
    Value choose(const Value (&values)[kCount]) {
        return values[next() % kCount];
    }

    unsigned char next() {
        if (bytes_.empty()) return 0;
        return static_cast<unsigned char>(bytes_[at_++ % bytes_.size()]);
    }

    const std::string_view bytes_;
    size_t at_ = 0;
};

}  // namespace Velo::OS::Telemetry::fuzz
