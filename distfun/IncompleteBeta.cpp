#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/IncompleteBeta.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::ExpOrZero;
using Numerics::Pair;

namespace {

constexpr double kTolerance = 1e-15;
constexpr int kMaxSteps = 10'000;
constexpr double kNotConverged = std::numeric_limits<double>::quiet_NaN();

// I_X(A, B) where C = 1 - X and S = A + B, or, when not direct, its complement.
struct Integral {
    double X;
    double C;
    double logX;
    double logC;
    double A;
    double B;
    double S;
    bool direct = true;

    // I_X(A, B) = 1 - I_C(B, A)
    void Exchange() {
        std::swap(X, C);
        std::swap(logX, logC);
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
    return n * I.logX - bound > kLogTolerance;
}

// What X^A C^B / (A Beta(A, B)) is to be multiplied by, as a power series in X; Abramowitz and
// Stegun 26.5.4. NaN if it does not converge. Two factors at a time, so that their divisions keep
// up with the products, each of which waits for the last; with B <= 1 no factor is above 1, so that
// the first of two terms is below the tolerance only where the second is.
double PowerSeries(const Integral& I) {
    static_assert(kMaxSteps % 2 == 0);
    double t = 1.0;
    double s = 1.0;
    Pair i = {0.0, 1.0};
    for (int step = 0; step < kMaxSteps; step += 2) {
        const Pair factors = (I.S + i) / (I.A + 1.0 + i) * I.X;
        i += 2.0;
        const double first = t * factors[0];
        t = first * factors[1];
        if (!(t >= kTolerance)) return s + first + (first >= kTolerance ? t : 0.0);
        s = s + first + t;
    }
    t *= (I.S + kMaxSteps) / (I.A + 1.0 + kMaxSteps) * I.X;
    return t >= kTolerance ? kNotConverged : s + t;
}

// The same as a continued fraction, two of its levels to a step; Abramowitz and Stegun 26.5.8.
// NaN if it does not converge. A step waits for the quotient bm of the one before; the other
// divisions are taken in pairs, so that it seldom waits for the divider as well.
double ContinuedFraction(const Integral& I) {
    const double X = I.X;
    const double A = I.A;
    const double B = I.B;
    const double S = I.S;
    double am = 1.0;
    double bm = 1.0;
    double az = 1.0;
    double bz = 1.0 - X * (S / (A + 1.0));
    double prev = 1.0 / bz;
    for (int step = 1; step <= kMaxSteps; ++step) {
        const double m = step;
        const double T = A + 2.0 * m;
        const Pair coefficients =
            (Pair{B - m, S + m} / Pair{T - 1.0, T + 1.0}) * (Pair{m, A + m} / T * X);
        const double d = coefficients[0];
        const double e = -coefficients[1];
        const double ap = az + d * am;
        const double bp = bz + d * bm;
        const double app = ap + e * az;
        const double bpp = bp + e * bz;
        if (bpp == 0.0) {
            am = ap;
            bm = bp;
            az = app;
            bz = 0.0;
            continue;
        }
        bm = bp / bpp;
        bz = 1.0;
        const Pair quotients = Pair{ap, app} / bpp;
        am = quotients[0];
        az = quotients[1];
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
    return std::log(w) + (I.A * I.logX + I.B * I.logC) + L;
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
    const double X = I.X;
    const double C = I.C;
    const double A = I.A;
    const double B = I.B;
    const double S = I.S;
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

MCDistFun::IncompleteBeta::IncompleteBeta(double a, double b) : mA(a), mB(b) {
    mLogScales.fill(std::numeric_limits<double>::quiet_NaN());
}

double MCDistFun::IncompleteBeta::LogScale(bool exchanged) {
    double& L = mLogScales[exchanged ? 1 : 0];
    if (std::isnan(L)) {
        const double A = exchanged ? mB : mA;
        const double B = exchanged ? mA : mB;
        // The logarithm of gamma at A + 1 holds the factor 1 / A.
        L = dnlgam(mA + mB) - dnlgam(A + 1.0) - dnlgam(B);
    }
    return L;
}

MCDistFun::IncompleteBeta::Result MCDistFun::IncompleteBeta::At(double x, double logX,
                                                                double logC) {
    if (mA == 1.0 && mB == 1.0) return {x, x};
    Integral I{x, 1.0 - x, logX, logC, mA, mB, mA + mB};
    double w = kNotConverged;
    if (mA <= 1.0 || mB <= 1.0) {
        if (mA <= 1.0) I.Exchange();
        if (!SeriesIsHopeless(I)) w = PowerSeries(I);
    }
    if (std::isnan(w)) {
        if ((I.A + 1.0) / (I.S + 2.0) <= I.X) I.Exchange();
        w = ContinuedFraction(I);
    }
    if (!std::isnan(w)) {
        const double r = ExpOrZero(LogOfIntegral(I, w, LogScale(!I.direct)));
        if (I.direct) return {r, r};
        return {1.0 - r, 1.0};
    }
    const double z = PeizerPratt(I);
    return {prbnrm(I.direct ? z : -z), std::numeric_limits<double>::quiet_NaN()};
}

double MCDistFun::cdfbet(const double& x, const double& a, const double& b, long& code) {
    code = 0;
    if (!(a > 0.0 && b > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    const double C = 1.0 - x;
    if (x <= 0.0) return 0.0;
    if (C <= 0.0) return 1.0;
    if (std::isnan(x)) return x;
    if (a == 1.0 && b != 1.0) return 1.0 - ExpOrZero(b * std::log(C));
    if (b == 1.0 && a != 1.0) return ExpOrZero(a * std::log(x));
    return IncompleteBeta(a, b).At(x, std::log(x), std::log(C)).value;
}

}  // namespace MAMath
