// Which registers the processor has.

#include "accredit/diststats/internal/BlockFold.h"

#include <atomic>

namespace MADetail {

namespace {

std::atomic<const BlockFold*> gInUse = nullptr;

}  // namespace

const BlockFold& WidestBlockFold(std::size_t lanes) {
#ifdef __x86_64__
    const bool hasFour = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    if (lanes >= kFoldEight.lanes && __builtin_cpu_supports("avx512f") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") && hasFour) {
        return kFoldEight;
    }
    if (lanes >= kFoldFour.lanes && hasFour) {
        return kFoldFour;
    }
#endif
    return kFoldTwo;
}

const BlockFold& BlockFoldInUse() {
    if (gInUse == nullptr) gInUse = &WidestBlockFold(kGroup);
    return *gInUse;
}

void UseBlockFold(const BlockFold& fold) { gInUse = &fold; }

}  // namespace MADetail
