#pragma once

// What the quantile of the chi-square distribution asks of the incomplete gamma function. Not for
// callers of the library.

#include <limits>

namespace MAMath::Numerics {

/// Between them lies a value, and its rounding.
struct Bounds {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
};

/// Bounds of P(x, a), the regularised incomplete gamma integral with shape a, that spare a
/// comparison the sum of a series of millions of terms; no bounds where it is not that long.
Bounds BoundLowerTail(double x, double a);

}  // namespace MAMath::Numerics
