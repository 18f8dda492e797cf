#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

/// @file
/// Most numbers in files are short. These are read eight digits at a time.

namespace app {

/// Stands for a text that is no short number.
inline constexpr double kNoShortNumber = std::numeric_limits<double>::quiet_NaN();

namespace short_number {

inline constexpr std::uint64_t kOnes = 0x0101010101010101U;
inline constexpr std::uint64_t kTopBits = 0x80 * kOnes;

// By what a number without and with a minus sign is divided, by the place of its point among eight
// bytes; the last one of numbers without a point. To take the sign from here is no slower where it
// is as often one as the other.
inline constexpr std::array<std::array<double, 8>, 2> kDivisors = {
    {{1e7, 1e6, 1e5, 1e4, 1e3, 1e2, 1e1, 1e0}, {-1e7, -1e6, -1e5, -1e4, -1e3, -1e2, -1e1, -1e0}}};

// Eight bytes as a number, the first one lowest.
inline std::uint64_t Word(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    word = __builtin_bswap64(word);
#endif
    return word;
}

// The number of eight digits, each a byte from 0 to 9, the first one lowest: first pairs of them
// become one number, then pairs of these, then both halves.
inline double Join(std::uint64_t digits) {
    digits = (digits * (10 * 256 + 1)) >> 8U;
    digits = ((digits & 0x00FF00FF00FF00FFU) * (100 * 65536 + 1)) >> 16U;
    digits = ((digits & 0x0000FFFF0000FFFFU) * ((std::uint64_t{10000} << 32U) + 1)) >> 32U;
    return static_cast<std::int32_t>(digits);
}

}  // namespace short_number

/// The number that a text spells in up to eight digits and `point` with an optional minus sign
/// before them, at least one digit and no more than eight bytes besides the sign: the nearest
/// double, because the digits and the power of ten by which they are divided are doubles, and a
/// division is rounded once. A NaN for any other text. Nine bytes at `text` must be readable, even
/// if it is shorter.
inline double ShortNumber(const char* text, std::size_t size, char point) {
    using namespace short_number;
    const std::size_t sign = *text == '-' ? 1 : 0;
    text += sign;
    size -= sign;
    if (size - 1 >= 8) return kNoShortNumber;
    // The text moves to the last bytes, digits become their values, and zeros go before them.
    const std::size_t absent = 8 * (8 - size);
    std::uint64_t digits = (Word(text) << absent) ^ (('0' * kOnes) << absent);
    // The top bit of each byte that is no digit. A carry can only come from such a byte, to those
    // above it.
    const std::uint64_t others = ((digits + (0x80 - 10) * kOnes) | digits) & kTopBits;
    if (others == 0) return Join(digits) * kDivisors[sign][7];
    const auto place = static_cast<std::size_t>(__builtin_ctzll(others)) / 8;
    const bool isOne = (others & (others - 1)) == 0;
    if (!isOne || text[size + place - 8] != point || size == 1) return kNoShortNumber;
    // The digits before the point move on by its place.
    const std::uint64_t upTo = others ^ (others - 1);
    digits = (digits & ~upTo) | ((digits << 8U) & upTo);
    return Join(digits) / kDivisors[sign][place];
}

}  // namespace app
