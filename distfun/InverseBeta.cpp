#include <algorithm>
#include <cmath>
#include <optional>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/IncompleteBeta.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::ExpOrZero;
using Numerics::kExponentFloor;
using Numerics::OrMissing;

namespace {

constexpr double kExponentCeiling = 709.0;

// Algorithm AS 109. The start values are for the lower tail alpha <= 0.5 of shapes A and B; y >= 0
// is the normal deviate of the upper tail alpha, and beta is ln(Beta(A, B)).

// Both shapes above 1; Abramowitz and Stegun 26.5.22.
double NormalStart(double A, double B, double y) {
    const double r = (y * y - 3.0) / 6.0;
    const double s = 1.0 / (2.0 * A - 1.0);
    const double t = 1.0 / (2.0 * B - 1.0);
    const double h = 2.0 / (s + t);
    const double w =
        y * std::sqrt(h + r) / h - (t - s) * (r + 0.8333333333333334 - 2.0 / (3.0 * h));
    return A / (A + B * std::exp(2.0 * w));
}

// Otherwise: by the chi-square approximation of the beta distribution, or where that fails by the
// leading term at one of the ends. None if a logarithm is out of range.
std::optional<double> ChiSquareStart(double A, double B, double alpha, double y, double beta) {
    const double r = 2.0 * B;
    const double t = 1.0 / (9.0 * B);
    const double root = (1.0 - t) + y * std::sqrt(t);
    const double T = r * (root * root * root);
    if (T <= 0.0) {
        const double v = (std::log((1.0 - alpha) * B) + beta) / B;
        if (v > kExponentCeiling) return std::nullopt;
        return 1.0 - ExpOrZero(v);
    }
    const double T2 = (4.0 * A + r - 2.0) / T;
    if (T2 <= 1.0) {
        const double v = (std::log(alpha * A) + beta) / A;
        if (v > kExponentCeiling) return std::nullopt;
        return ExpOrZero(v);
    }
    return 1.0 - 2.0 / (T2 + 1.0);
}

double Clamp(double x) {
    if (x < 1e-8) return 1e-8;
    if (x > 0.9999999) return 0.9999999;
    return x;
}

// Newton's step d from x, divided by 3 until it does not lead out of (0, 1) and its square is below
// `limit`. Ends at the latest when it has underflowed.
double Shortened(double d, double x, double limit) {
    for (double g = 1.0;; g /= 3.0) {
        const double step = g * d;
        const double tx = x - step;
        if ((step * step < limit && tx > 0.0 && tx < 1.0) || step == 0.0) return step;
    }
}

// A step of Newton's method is the last if its square is not above this.
constexpr double kSmallSquare = 1e-20;

// Whether the step after Newton's step d, which led to x, is sure to be the last, so that the
// distribution function need not be asked for it. By Taylor's theorem that step is d^2 / 2 times
// |f' / f| between the two places at most, for the density f of shapes A and B, and what rounding
// adds, at most `noise`; the constants leave room for the change of f on the way. Says nothing of
// shapes so large that the continued fraction could converge at one place and not at the other.
bool NextStepIsLast(double x, double d, double A, double B, double noise) {
    constexpr double kLargestShapes = 1e5;
    constexpr double kNear = 0.01;
    constexpr double kHalfAndRoom = 0.55;
    constexpr double kSmallAndRoom = 0.9e-10;
    const double size = std::fabs(d);
    const double bend = std::fabs(A - 1.0) / x + std::fabs(B - 1.0) / (1.0 - x);
    return A + B <= kLargestShapes && size <= kNear * std::min(x, 1.0 - x) &&
           size * bend <= kNear && kHalfAndRoom * bend * d * d + noise <= kSmallAndRoom;
}

}  // namespace

double MCDistFun::betinv(const double& P, const double& a, const double& b) {
    constexpr int kMaxEvaluations = 50;
    // The rounding of F and of the slope, relative to the sizes of the logarithms that make them up
    // and as many for the terms of series and fraction: a hundred times what has been seen.
    constexpr double kRounding = 2e-15;
    constexpr double kTerms = 5000.0;
    // With ln(slope) below it neither is kExponentCeiling near nor does an F count that underflows.
    constexpr double kLargeSlope = 350.0;

    if (P == 0.0) return 0.0;
    if (P == 1.0) return 1.0;
    if (!(a > 0.0 && b > 0.0 && P >= 0.0 && P <= 1.0)) return -1.0;
    if (a == b) {
        if (P == 0.5) return 0.5;
        if (a == 0.5) {
            const double root = std::sin(0.5 * P * 3.141592653589793);
            return root * root;
        }
    } else if (a == 1.0) {
        return 1.0 - ExpOrZero(std::log(1.0 - P) / b);
    } else if (b == 1.0) {
        return ExpOrZero(std::log(P) / a);
    }
    if (b <= a * 1e-20) return 1.0;
    const double z = probit(P);
    if (MCMV::IsMissing(z)) return -1.0;

    const bool upper = P > 0.5;
    const double A = upper ? b : a;
    const double B = upper ? a : b;
    const double alpha = upper ? 1.0 - P : P;
    const double y = upper ? z : -z;
    const double gammaA = dnlgam(A);
    const double gammaB = dnlgam(B);
    const double gammaS = dnlgam(A + B);
    const double beta = gammaA + gammaB - gammaS;
    const std::optional<double> start =
        A > 1.0 && B > 1.0 ? NormalStart(A, B, y) : ChiSquareStart(A, B, alpha, y, beta);
    if (!start) return a / (a + b);

    // Newton's method, its step shortened while it leads out of (0, 1) or is no shorter than the
    // last one before the change of sign.
    const double sizes = kTerms + A + B + std::fabs(gammaA) + std::fabs(gammaB) + std::fabs(gammaS);
    IncompleteBeta distribution(A, B);
    double x = Clamp(*start);
    double d_prev = 0.0;
    double sq = 1.0;
    double prev = 1.0;
    for (int count = 1; count <= kMaxEvaluations; ++count) {
        const double logX = std::log(x);
        const double logC = std::log(1.0 - x);
        const auto [F, scale] = distribution.At(x, logX, logC);
        const double v = beta + (1.0 - A) * logX + (1.0 - B) * logC;
        if (v > kExponentCeiling) return a / (a + b);
        // F may be infinite, and has no say where the slope of its inverse counts as 0.
        const double slope = v < kExponentFloor ? 0.0 : std::exp(v);
        const double d = slope == 0.0 ? 0.0 : (F - alpha) * slope;
        if (std::isnan(d)) return -1.0;
        if (d * d_prev <= 0.0) prev = sq;

        const double step = Shortened(d, x, prev);
        const double tx = x - step;
        if (prev <= kSmallSquare || d * d <= kSmallSquare || tx == x) break;
        x = tx;
        d_prev = d;
        sq = step * step;
        if (step == d && v < kLargeSlope) {
            const double rounding = kRounding * (sizes - A * logX - B * logC);
            const double noise = rounding * (2.0 * scale * slope + std::fabs(d));
            if (NextStepIsLast(x, d, A, B, noise)) break;
        }
    }
    return upper ? 1.0 - x : x;
}

double MCDistFun::teskidff(const double& P, const double& df1, const double& df2, long& code) {
    code = 0;
    if (!(P >= 0.0 && P < 1.0 && df1 > 0.0 && df2 > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    if (P == 0.0) return 0.0;
    const double r = betinv(P, df1 / 2.0, df2 / 2.0);
    if (!(r >= 0.0 && r < 1.0)) {
        code = 2;
        return MCMV::Missing();
    }
    return (r / (1.0 - r)) * (df2 / df1);
}

double MCDistFun::teskidft(const double& P, const double& df, long& code) {
    code = 0;
    if (!(P > 0.0 && P < 1.0 && df > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    if (P == 0.5) return 0.0;
    const double bothTails = P < 0.5 ? 2.0 * P : (2.0 - P) - P;
    const double r = betinv(bothTails, df / 2.0, 0.5);
    const double v = df * (1.0 / r - 1.0);
    if (r == -1.0 || !(v >= 0.0)) {
        code = 2;
        return MCMV::Missing();
    }
    return P > 0.5 ? std::sqrt(v) : -std::sqrt(v);
}

double MCDistFun::IdfF(double P, double df1, double df2) {
    long code = 0;
    const double value = teskidff(P, df1, df2, code);
    return OrMissing(value, code);
}

double MCDistFun::IdfT(double P, double df) {
    long code = 0;
    const double value = teskidft(P, df, code);
    return OrMissing(value, code);
}

}  // namespace MAMath
