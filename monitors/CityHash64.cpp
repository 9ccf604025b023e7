#include "monitors/CityHash64.h"

#include <bit>
#include <cstring>
#include <utility>

namespace Velo::OS::Telemetry {

namespace {

constexpr uint64_t k0 = 0xc3a5c85c97cb3127, k1 = 0xb492b66fbe98f273, k2 = 0x9ae16a3b2f90404f, k3 = 0xc949d7c7509e6557;

using Pair = std::pair<uint64_t, uint64_t>;

uint64_t word64(const char* bytes) {
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

uint32_t word32(const char* bytes) {
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? word : __builtin_bswap32(word);
}

/// By 1 to 63 bits, to the right.
uint64_t rotated(uint64_t word, size_t bits) { return (word >> bits) | (word << (64 - bits)); }

uint64_t mixed(uint64_t word) { return word ^ (word >> 47); }

uint64_t hashOfTwo(uint64_t low, uint64_t high) {
    constexpr uint64_t kMultiplier = 0x9ddfea08eb382d69;
    return mixed((mixed((low ^ high) * kMultiplier) ^ high) * kMultiplier) * kMultiplier;
}

uint64_t hashOfUpTo16(const char* bytes, size_t length) {
    const char* end = bytes + length;
    if (length > 8) {
        const uint64_t last = word64(end - 8);
        return hashOfTwo(word64(bytes), rotated(last + length, length)) ^ last;
    }
    // The first word is shifted within its 32 bits, which the authors' releases widen before.
    if (length >= 4) return hashOfTwo(length + (word32(bytes) << 3), word32(end - 4));
    if (length == 0) return k2;
    const auto byteAt = [&](size_t i) { return uint32_t{static_cast<unsigned char>(bytes[i])}; };
    const uint32_t y = byteAt(0) + (byteAt(length / 2) << 8);
    const uint32_t z = static_cast<uint32_t>(length) + (byteAt(length - 1) << 2);
    return mixed(y * k2 ^ z * k3) * k2;
}

uint64_t hashOfUpTo32(const char* bytes, size_t length) {
    const char* end = bytes + length;
    const uint64_t a = word64(bytes) * k1;
    const uint64_t b = word64(bytes + 8);
    const uint64_t c = word64(end - 8) * k2;
    const uint64_t d = word64(end - 16) * k0;
    return hashOfTwo(rotated(a - b, 43) + rotated(c, 30) + d, a + rotated(b ^ k3, 20) - c + length);
}

Pair hashOfFour(uint64_t first, uint64_t second, uint64_t third, uint64_t last) {
    const uint64_t sum = first + second + third;
    return {sum + last, rotated(first + last, 52) + rotated(first, 37) + rotated(first + second, 7) + rotated(sum, 31)};
}

uint64_t hashOfUpTo64(const char* bytes, size_t length) {
    const char* end = bytes + length;
    const uint64_t z = word64(bytes + 24);
    const Pair v =
        hashOfFour(word64(bytes) + (length + word64(end - 16)) * k0, word64(bytes + 8), word64(bytes + 16), z);
    const Pair w =
        hashOfFour(word64(bytes + 16) + word64(end - 32), word64(end - 24), word64(end - 16), z + word64(end - 8));
    const uint64_t r = mixed((v.first + w.second) * k2 + (w.first + v.second) * k0);
    return mixed(r * k0 + v.second) * k2;
}

/// Of the next 32 bytes and two seeds.
Pair weakHash(const char* bytes, uint64_t a, uint64_t b) {
    const uint64_t last = word64(bytes + 24);
    const uint64_t first = a + word64(bytes);
    const uint64_t sum = first + word64(bytes + 8) + word64(bytes + 16);
    return {sum + last, rotated(b + first + last, 21) + rotated(sum, 44) + first};
}

uint64_t hashOfMore(const char* bytes, size_t length) {
    const char* end = bytes + length;
    uint64_t x = word64(end - 40);
    uint64_t y = word64(end - 16) + word64(end - 56);
    uint64_t z = hashOfTwo(word64(end - 48) + length, word64(end - 24));
    Pair v = weakHash(end - 64, length, z);
    Pair w = weakHash(end - 32, y + k1, x);
    x = x * k1 + word64(bytes);
    // Whole blocks from the start. The last 64 bytes are in the seeds, so a text that ends with a block leaves it out.
    for (size_t blocks = (length - 1) / 64; blocks > 0; --blocks, bytes += 64) {
        x = rotated(x + y + v.first + word64(bytes + 8), 37) * k1;
        y = rotated(y + v.second + word64(bytes + 48), 42) * k1;
        x ^= w.second;
        y += v.first + word64(bytes + 40);
        z = rotated(z + w.first, 33) * k1;
        v = weakHash(bytes, v.second * k1, x + w.first);
        w = weakHash(bytes + 32, z + w.second, y + word64(bytes + 16));
        std::swap(z, x);
    }
    return hashOfTwo(hashOfTwo(v.first, w.first) + mixed(y) * k1 + z, hashOfTwo(v.second, w.second) + x);
}

}  // namespace

uint64_t cityHash64(std::string_view text) {
    if (text.size() <= 16) return hashOfUpTo16(text.data(), text.size());
    if (text.size() <= 32) return hashOfUpTo32(text.data(), text.size());
    if (text.size() <= 64) return hashOfUpTo64(text.data(), text.size());
    return hashOfMore(text.data(), text.size());
}

}  // namespace Velo::OS::Telemetry
