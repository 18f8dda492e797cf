#include "app/data/DistinctCounter.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace app {

namespace {

// The finalizer of S. Vigna's SplitMix64, in which every bit of the number counts for every bit.
std::uint64_t HashOf(double number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31U);
}

}  // namespace

void DistinctCounter::Add(std::string_view text) { AddHash(std::hash<std::string_view>()(text)); }

// Both zeros are one number.
void DistinctCounter::Add(double number) { AddHash(HashOf(number + 0.0)); }

void DistinctCounter::AddSampled(std::uint64_t hash) {
    std::uint64_t& last = mLast[hash % mLast.size()];
    if (last == hash && hash != 0) return;
    last = hash;
    const auto place = std::lower_bound(mSample.begin(), mSample.end(), hash);
    if (place != mSample.end() && *place == hash) return;
    mSample.insert(place, hash);
    while (mSample.size() > mLimit) {
        ++mZeroBits;
        mSample.erase(
            std::lower_bound(mSample.begin(), mSample.end(), std::uint64_t{1} << (64U - mZeroBits)),
            mSample.end());
    }
}

}  // namespace app
