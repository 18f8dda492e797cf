#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::ExpOrZero;

namespace {

constexpr double kTolerance = 1e-15;
constexpr int kMaxSteps = 10'000;
constexpr double kNotConverged = std::numeric_limits<double>::quiet_NaN();

// I_X(A, B) where C = 1 - X and S = A + B, or, when not direct, its complement.
struct Integral {
    double X;
    double C;
    double A;
    double B;
    double S;
    bool direct = true;

    // I_X(A, B) = 1 - I_C(B, A)
    void Exchange() {
        std::swap(X, C);
        std::swap(A, B);
        direct = !direct;
    }
};

// Whether the terms of the series are sure to be still above the tolerance at its last step n; it
// spares thousands of vain steps where X is near 1. With B <= 1, as here, the terms fall steadily,
// and the last is above X^n exp(-(1 - B) (1 / S + ln(1 + n / S))).
bool SeriesIsHopeless(const Integral& I) {
    constexpr double n = kMaxSteps + 1.0;
    constexpr double kLogTolerance = -34.5;
    if (I.X < 0.996) return false;
    const double bound = (1.0 - I.B) * (1.0 / I.S + std::log(1.0 + n / I.S));
    return n * std::log(I.X) - bound > kLogTolerance;
}

// What X^A C^B / (A Beta(A, B)) is to be multiplied by, as a power series in X; Abramowitz and
// Stegun 26.5.4. NaN if it does not converge.
double PowerSeries(const Integral& I) {
    double t = 1.0;
    double s = 1.0;
    for (int i = 0; i <= kMaxSteps; ++i) {
        t *= (I.S + i) / (I.A + 1.0 + i) * I.X;
        s += t;
        if (!(std::fabs(t) >= kTolerance)) return s;
    }
    return kNotConverged;
}

// The same as a continued fraction, two of its levels to a step; Abramowitz and Stegun 26.5.8.
// NaN if it does not converge.
double ContinuedFraction(const Integral& I) {
    const auto [X, C, A, B, S, direct] = I;
    double am = 1.0;
    double bm = 1.0;
    double az = 1.0;
    double bz = 1.0 - X * (S / (A + 1.0));
    double prev = 1.0 / bz;
    for (int m = 1; m <= kMaxSteps; ++m) {
        const double T = A + 2.0 * m;
        const double d = ((B - m) / (T - 1.0)) * (m / T * X);
        const double ap = az + d * am;
        const double bp = bz + d * bm;
        const double e = -(((A + m) / T * X) * ((S + m) / (T + 1.0)));
        const double app = ap + e * az;
        const double bpp = bp + e * bz;
        if (bpp == 0.0) {
            am = ap;
            bm = bp;
            az = app;
            bz = 0.0;
            continue;
        }
        am = ap / bpp;
        bm = bp / bpp;
        az = app / bpp;
        bz = 1.0;
        if (std::fabs(az - prev) < kTolerance) return az;
        if (std::isnan(az)) break;
        prev = az;
    }
    return kNotConverged;
}

// The logarithm of the integral, from the value w of one of these and L, the logarithm of
// 1 / (A Beta(A, B)).
double LogOfIntegral(const Integral& I, double w, double L) {
    if (w <= 0.0) return -std::numeric_limits<double>::infinity();
    return std::log(w) + (I.A * std::log(I.X) + I.B * std::log(I.C)) + L;
}

double Auxiliary(double u) {
    constexpr double kSquareOverflows = 1.3407807929942596e154;
    if (u < 0.0) return MCMV::Missing();
    if (u == 0.0) return 1.0;
    if (u > kSquareOverflows) return -1.0;
    const double v = 1.0 - u;
    if (v == 0.0) return 0.0;
    return (2.0 * u * std::log(u) + (1.0 - u * u)) / (v * v);
}

// The normal deviate of I_X(A, B) by Peizer and Pratt. A shape below 0.5 takes the limit of the
// auxiliary function at 0.
double PeizerPratt(const Integral& I) {
    const auto [X, C, A, B, S, direct] = I;
    const double N = S - 1.0;
    const double u = std::max((A - 0.5) / (N * X), 0.0);
    const double v = std::max((B - 0.5) / (N * C), 0.0);
    const double W = 1.0 + C * Auxiliary(u) + X * Auxiliary(v);
    const double V = W / (X * C * (N + 1.0 / 6.0));
    if (!(V > 0.0)) return 0.0;
    return std::sqrt(V) *
           (N * (X - A / N) + (X + 1.0) / 3.0 + (X / B - C / A + (X - 0.5) / S) / 50.0);
}

}  // namespace

double MCDistFun::cbtaux(const double& u) { return Auxiliary(u); }

double MCDistFun::cdfbet(const double& x, const double& a, const double& b, long& code) {
    code = 0;
    if (!(a > 0.0 && b > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    Integral I{x, 1.0 - x, a, b, a + b};
    if (x <= 0.0) return 0.0;
    if (I.C <= 0.0) return 1.0;
    if (std::isnan(x)) return x;
    if (a == 1.0 && b == 1.0) return x;
    if (a == 1.0) return 1.0 - ExpOrZero(b * std::log(I.C));
    if (b == 1.0) return ExpOrZero(a * std::log(x));

    double w = kNotConverged;
    if (a <= 1.0 || b <= 1.0) {
        if (a <= 1.0) I.Exchange();
        if (!SeriesIsHopeless(I)) w = PowerSeries(I);
    }
    if (std::isnan(w)) {
        if ((I.A + 1.0) / (I.S + 2.0) <= I.X) I.Exchange();
        w = ContinuedFraction(I);
    }
    if (!std::isnan(w)) {
        // The logarithm of gamma at A + 1 holds the factor 1 / A.
        const double L = dnlgam(I.S) - dnlgam(I.A + 1.0) - dnlgam(I.B);
        const double r = ExpOrZero(LogOfIntegral(I, w, L));
        return I.direct ? r : 1.0 - r;
    }
    const double z = PeizerPratt(I);
    return prbnrm(I.direct ? z : -z);
}

}  // namespace MAMath
