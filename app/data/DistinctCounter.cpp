#include "app/data/DistinctCounter.h"

#include <algorithm>
#include <functional>

namespace app {

void DistinctCounter::Add(std::string_view text) {
    const std::uint64_t hash = std::hash<std::string_view>()(text);
    std::uint64_t& last = mLast[hash % mLast.size()];
    if (last == hash && hash != 0) return;
    last = hash;
    if (!IsSampled(hash)) return;
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
