#pragma once

#include <cmath>
#include <limits>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/host/MCMV.h"

using MAMath::MCDistFun;

constexpr double kMissing = MCMV::Missing();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The size of the difference in units of `want`: 0 for equal values, infinities and missing ones
/// included; infinite where only one of them is 0, infinite or missing, and for any NaN.
inline double RelativeError(double got, double want) {
    if (got == want) return 0.0;
    const bool comparable = want != 0.0 && !MCMV::IsMissing(want) && !MCMV::IsMissing(got);
    const double error = std::fabs((got - want) / want);
    return comparable && std::isfinite(error) ? error : std::numeric_limits<double>::infinity();
}

/// The value of a function whose last argument is the code.
template <class F, class... Arguments>
double Value(F f, Arguments... arguments) {
    long code = 99;
    const double value = f(arguments..., code);
    return code == 0 ? value : kNaN;
}
