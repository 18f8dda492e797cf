#pragma once

// The incomplete beta function, for those that ask for it more than once with the same shapes. Not
// for callers of the library.

#include <array>

#include "accredit/distfun/MCDistFun.h"

namespace MAMath {

/// I_x(a, b) of fixed shapes a, b > 0. Keeps the logarithms of gamma, which depend on them alone.
class MCDistFun::IncompleteBeta {
public:
    IncompleteBeta(double a, double b);

    struct Result {
        double value;
        /// What its rounding is relative to: the value itself, or 1 where it was taken from 1; NaN
        /// if the value is that of the normal approximation.
        double scale;
    };

    /// I_x(a, b) for 0 < x < 1, where neither shape is 1 or both are. logX and logC are the
    /// logarithms of x and 1 - x.
    Result At(double x, double logX, double logC);

private:
    // ln(1 / (A Beta(A, B))) of the shapes as they are or exchanged; kept from the first call on.
    double LogScale(bool exchanged);

    double mA;
    double mB;
    std::array<double, 2> mLogScales;
};

}  // namespace MAMath
