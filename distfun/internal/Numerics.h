#pragma once

// What the sources of the distribution functions share. Not for callers of the library.

#include <array>
#include <cmath>
#include <cstddef>

#include "accredit/host/MCMV.h"

namespace MAMath::Numerics {

/// The polynomial with these coefficients, highest power first, at x.
template <std::size_t N>
constexpr double Horner(const std::array<double, N>& coefficients, double x) {
    static_assert(N > 0);
    double value = coefficients[0];
    for (std::size_t i = 1; i < N; ++i) value = value * x + coefficients[i];
    return value;
}

/// Two doubles that are added, multiplied and divided side by side, in one instruction where the
/// processor has one; each is rounded as it would be alone.
using Pair = double __attribute__((vector_size(2 * sizeof(double))));

/// Below it exp(y) counts as 0, before it is denormal.
constexpr double kExponentFloor = -708.0;

inline double ExpOrZero(double y) { return y < kExponentFloor ? 0.0 : std::exp(y); }

/// What the public functions make of a result, and of one that came with a code.
inline double OrMissing(double value) { return std::isnan(value) ? MCMV::Missing() : value; }
inline double OrMissing(double value, long code) {
    return code == 0 ? OrMissing(value) : MCMV::Missing();
}

}  // namespace MAMath::Numerics
