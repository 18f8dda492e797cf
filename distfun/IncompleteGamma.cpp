#include <algorithm>
#include <cmath>
#include <limits>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/LowerTail.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::ExpOrZero;
using Numerics::kExponentFloor;

namespace {

constexpr double kTolerance = 1e-14;
constexpr double kLog10Tolerance = -14.0;

// A limit for both expansions. The series needs more with a shape above 1e12 and x beside it, where
// the logarithms that scale it have lost all but two digits behind the point: from there on the
// normal approximation is the better one.
constexpr int kMaxRounds = 5'000'000;
constexpr double kNotConverged = std::numeric_limits<double>::quiet_NaN();

// Above the logarithm of every series that is short enough.
constexpr double kLargestLogOfSeries = 20.0;

// Whether the terms of the series are sure to move its sum still after kMaxRounds: at most
// kMaxRounds + 1, it is moved by all above 4.7e-10. The logarithms of their ratios fall ever more
// slowly, so that the mean is above the middle one.
bool SeriesIsHopeless(double x, double a) {
    if (a < 1e11) return false;
    return kMaxRounds * std::log(x / (a + 0.5 * kMaxRounds + 0.5)) > -21.0;
}

// Whether the series is short enough, by an estimate of the number of its terms. It can be too long
// only where x and a + 1 share their first seven digits.
bool SeriesIsShort(double x, double a) {
    const double ratio = x / (a + 1.0);
    if (ratio < 0.99) return true;  // spares the logarithm: n is below 200
    const double L = std::log10(ratio);
    if (L == 0.0) return false;
    const double Z = kLog10Tolerance / L;
    if (!(Z > 0.0)) return true;
    const double n = 2.0 * std::sqrt(Z) + 10.0;
    return n * n < 2147483647.0;
}

// 1 + x / (a + 1) + x^2 / ((a + 1) (a + 2)) + ..., which times x^a exp(-x) / gamma(a + 1) is
// P(a, x); Algorithm AS 239, Abramowitz and Stegun 6.5.29. The terms shrink, so that none counts
// after the first that does not. NaN if it does not converge.
double LowerTailSeries(double x, double a) {
    if (SeriesIsHopeless(x, a)) return kNotConverged;
    double b = a;
    double c = 1.0;
    double s = 1.0;
    for (int round = 0; round < kMaxRounds; ++round) {
        b += 1.0;
        c = c * x / b;
        const double before = s;
        s += c;
        if (s == before || !(c >= kTolerance)) return s;
    }
    return kNotConverged;
}

// The continued fraction of Algorithm AS 239, which times x^a exp(-x) / gamma(a) is Q(a, x);
// Abramowitz and Stegun 6.5.31, two of its levels a round. NaN if it does not converge.
double UpperTailFraction(double x, double a) {
    constexpr double kRescale = 1.3407807929942596e154;  // the square root of the largest double
    double A = 1.0 - a;
    double B = A + x + 1.0;
    double p1 = 1.0;
    double p2 = x;
    double p3 = x + 1.0;
    double p4 = x * B;
    double G = p3 / p4;
    for (int round = 1; round <= kMaxRounds; ++round) {
        A += 1.0;
        B += 2.0;
        const double N = A * round;
        const double p5 = B * p3 - N * p1;
        const double p6 = B * p4 - N * p2;
        if (std::fabs(p6) > 0.0) {
            const double rn = p5 / p6;
            if (std::fabs(G - rn) <= std::min(kTolerance, kTolerance * rn)) return G;
            G = rn;
        }
        if (std::isnan(G) || std::isnan(p6)) break;
        p1 = p3;
        p2 = p4;
        p3 = p5;
        p4 = p6;
        if (std::fabs(p5) >= kRescale) {
            p1 /= kRescale;
            p2 /= kRescale;
            p3 /= kRescale;
            p4 /= kRescale;
        }
    }
    return kNotConverged;
}

// The deviate of the upper tail by Peizer and Pratt.
double PeizerPratt(double x, double a) {
    const double y = (a - 0.5) / x;
    double f = 0.0;
    if (y == 0.0) {
        f = std::sqrt(2.0 / x);
    } else if (y == 1.0) {
        f = std::sqrt(1.0 / x);
    } else {
        // Never below 0 but by rounding, with y beside 1.
        const double W = std::max(y * std::log(y) + 1.0 - y, 0.0);
        f = std::sqrt(2.0 * W / x) / std::fabs(1.0 - y);
    }
    return f * (0.022 / a + a - x - 0.3333333333333333);
}

// The deviate of the lower tail by Wilson and Hilferty, Abramowitz and Stegun 26.4.17.
double WilsonHilferty(double x, double a) {
    const double c = 3.0 * std::sqrt(a);
    if (a == x) return 1.0 / c;
    const double r = ExpOrZero(std::log(x / a) / 3.0);
    return (r + 1.0 / (9.0 * a) - 1.0) * c;
}

}  // namespace

Numerics::Bounds Numerics::BoundLowerTail(double x, double a) {
    constexpr double kLongFrom = 1e6;
    constexpr double kMargin = 1e-6;  // more than the rounding of the series and its logarithm
    constexpr double kLengths = 5.0;  // how far the first terms are summed, in units of 1 / gap

    if (!(a >= kLongFrom && x > 1.0 && x <= a)) return {};
    if (!SeriesIsShort(x, a) || SeriesIsHopeless(x, a)) return {};
    const double scale = a * std::log(x) - (x + MCDistFun::teskdnlgam(a + 1.0));
    // The ratios of the terms fall: none is above the first, 1 - gap, and m are not below r.
    const double gap = (a + 1.0 - x) / (a + 1.0);
    const double m = std::floor(kLengths / gap) + 1.0;
    const double r = x / (a + m);
    const double low = std::log((1.0 - std::pow(r, m)) / (1.0 - r)) + scale - kMargin;
    const double high = -std::log(gap) + scale + kMargin;
    if (!(high < 0.0)) return {};
    return {ExpOrZero(low), ExpOrZero(high)};
}

double MCDistFun::gammad(const double& x, const double& a, const bool& lower, long& code) {
    code = 0;
    if (!(a > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    if (x <= 0.0) return lower ? 0.0 : 1.0;
    if (a == 1.0) {
        const double upper = ExpOrZero(-x);
        return lower ? 1.0 - upper : upper;
    }

    // A logarithm R of a probability above 0 is as worthless as a NaN: the approximation takes
    // over.
    const double lnX = std::log(x);
    if (x > 1.0 && a < x) {
        const double g = dnlgam(a);
        if (!MCMV::IsMissing(g) && 4.0 * lnX < 709.0) {
            const double R = std::log(UpperTailFraction(x, a)) + (a * lnX - (x + g));
            if (R <= 0.0) return lower ? 1.0 - ExpOrZero(R) : ExpOrZero(R);
        }
    } else if (SeriesIsShort(x, a)) {
        const double g = dnlgam(a + 1.0);
        if (!MCMV::IsMissing(g)) {
            const double scale = a * lnX - (x + g);
            if (scale < kExponentFloor - kLargestLogOfSeries) return lower ? 0.0 : 1.0;
            // The series is 1 at least.
            const double R = scale > 0.0 ? scale : std::log(LowerTailSeries(x, a)) + scale;
            if (R <= 0.0) return lower ? ExpOrZero(R) : 1.0 - ExpOrZero(R);
        }
    }

    if (!lower && a >= 0.5) return prbnrm(PeizerPratt(x, a));
    const double z = WilsonHilferty(x, a);
    return prbnrm(lower ? z : -z);
}

double MCDistFun::CdfChi(double x, double df) {
    if (!(df > 0.0) || std::isnan(x)) return MCMV::Missing();
    if (x <= 0.0) return 0.0;
    long code = 0;
    const double value = gammad(x * 0.5, df * 0.5, true, code);
    return Numerics::OrMissing(value, code);
}

}  // namespace MAMath
