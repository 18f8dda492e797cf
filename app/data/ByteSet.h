#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// @file
/// Where bytes of a set stand in a text, for many bytes at a time.

namespace app {

/// So many bytes are looked at together.
inline constexpr std::size_t kBlock = 64;

/// A set of N bytes, looked for one byte at a time: for processors without the registers of
/// WideByteSet.
template <std::size_t N>
class PlainByteSet {
public:
    explicit PlainByteSet(const std::array<char, N>& bytes) {
        for (const char byte : bytes) mContains[static_cast<unsigned char>(byte)] = true;
    }

    /// Which of the kBlock bytes at `block` belong to the set: a bit for each, the first one
    /// lowest.
    std::uint64_t Find(const char* block) const {
        std::uint64_t found = 0;
        for (std::size_t i = 0; i < kBlock; ++i) {
            const bool contains = mContains[static_cast<unsigned char>(block[i])];
            found |= static_cast<std::uint64_t>(contains) << i;
        }
        return found;
    }

private:
    std::array<bool, 256> mContains{};
};

#if defined(__SSE2__)
/// The same in registers of 16 bytes, which every x86-64 processor has.
template <std::size_t N>
class WideByteSet {
public:
    explicit WideByteSet(const std::array<char, N>& bytes) {
        for (std::size_t i = 0; i < N; ++i) mCopies[i].value = _mm_set1_epi8(bytes[i]);
    }

    std::uint64_t Find(const char* block) const {
        std::uint64_t found = 0;
        for (std::size_t at = 0; at < kBlock; at += sizeof(__m128i)) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + at));
            __m128i equal = _mm_setzero_si128();
            for (const Copies& each : mCopies) {
                equal = _mm_or_si128(equal, _mm_cmpeq_epi8(bytes, each.value));
            }
            found |= static_cast<std::uint64_t>(_mm_movemask_epi8(equal)) << at;
        }
        return found;
    }

private:
    // One of the bytes in all places. A register's type loses its alignment as an argument of a
    // template.
    struct Copies {
        __m128i value;
    };
    std::array<Copies, N> mCopies;
};

template <std::size_t N>
using ByteSet = WideByteSet<N>;
#else
template <std::size_t N>
using ByteSet = PlainByteSet<N>;
#endif

}  // namespace app
