// Which registers the processor has.

#include "accredit/diststats/internal/BlockFold.h"

#include <cstdlib>

namespace MADetail {

const BlockFold& WidestBlockFold(std::size_t lanes) {
#ifdef __x86_64__
    if (lanes >= kFoldEight.lanes && __builtin_cpu_supports("avx512f") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
        return kFoldEight;
    }
    if (lanes >= kFoldFour.lanes && __builtin_cpu_supports("avx2") &&
        __builtin_cpu_supports("fma")) {
        return kFoldFour;
    }
#endif
    return kFoldTwo;
}

const BlockFold& BlockFoldInUse() {
    static const BlockFold& inUse = []() -> const BlockFold& {
        const char* const asked = std::getenv("ACCREDIT_LANES");
        return WidestBlockFold(asked ? std::strtoul(asked, nullptr, 10) : kGroup);
    }();
    return inUse;
}

}  // namespace MADetail
