#include "app/data/DistinctCounter.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace app {

namespace {

constexpr std::size_t kLeastMet = 64;
constexpr std::size_t kMostMet = 1024;

// The finalizer of S. Vigna's SplitMix64, in which every bit of the number counts for every bit.
std::uint64_t HashOf(double number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31U);
}

}  // namespace

DistinctCounter::DistinctCounter(std::size_t limit) : mLimit(limit) { ForgetMet(kLeastMet); }

bool DistinctCounter::Add(std::string_view text) {
    return AddHash(std::hash<std::string_view>()(text));
}

// Both zeros are one number.
bool DistinctCounter::Add(double number) { return AddHash(HashOf(number + 0.0)); }

inline bool DistinctCounter::AddHash(std::uint64_t hash) {
    if (!IsSampled(hash)) return true;
    std::uint64_t& met = mMet[hash & (mMet.size() - 1)];
    if (met == hash) return false;
    met = hash;
    AddSampled(hash);
    return true;
}

// `size` is a power of two.
void DistinctCounter::ForgetMet(std::size_t size) {
    mMet = std::vector<std::uint64_t>(size, 0);
    mMet.front() = 1;
}

void DistinctCounter::AddSampled(std::uint64_t hash) {
    const auto place = std::lower_bound(mSample.begin(), mSample.end(), hash);
    if (place != mSample.end() && *place == hash) return;
    mSample.insert(place, hash);
    if (IsExact() && mSample.size() > mMet.size() / 4 && mMet.size() < kMostMet) {
        ForgetMet(2 * mMet.size());
    }
    while (mSample.size() > mLimit) {
        ++mZeroBits;
        mSample.erase(
            std::lower_bound(mSample.begin(), mSample.end(), std::uint64_t{1} << (64U - mZeroBits)),
            mSample.end());
        // What the column holds is seldom in the sample from here on.
        ForgetMet(kLeastMet);
    }
}

}  // namespace app
