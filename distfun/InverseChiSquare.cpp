#include <cmath>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/LowerTail.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::ExpOrZero;

namespace {

// Algorithm AS 91. Its decimals are those of a single-precision program: each constant below is
// the float nearest to the decimal in its name, and the results depend on it.
constexpr double k0_01 = 0.009999999776482582;
constexpr double k0_222222 = 0.2222220003604889;
constexpr double k0_32 = 0.3199999928474426;
constexpr double k0_4 = 0.4000000059604645;
constexpr double k1_24 = 1.2400000095367432;
constexpr double k2_2 = 2.200000047683716;
constexpr double k4_67 = 4.670000076293945;
constexpr double k6_66 = 6.659999847412109;
constexpr double k6_73 = 6.730000019073486;
constexpr double k13_32 = 13.319999694824219;

constexpr double kTolerance = 5e-7;
constexpr double kExponentCeiling = 141.8;
constexpr double kLn2 = 0.6931471805599453;
constexpr int kMaxPasses = 20;

// The start of the small degrees of freedom settles within 40 rounds, or never.
constexpr int kMaxStartRounds = 100;

// A first approximation, and what is to be done with it.
struct Start {
    enum class Next { Refine, Accept, Fail };
    double ch;
    Next next = Next::Refine;
};

// For p small against df: the first term of the series of P(a, x), solved for x.
Start SmallChiSquareStart(double lp, double xx, double g) {
    const double Y = (std::log(xx) + lp + g + kLn2 * xx) / xx;
    if (Y > kExponentCeiling) return {0.0, Start::Next::Fail};
    const double ch = ExpOrZero(Y);
    return {ch, ch < kTolerance ? Start::Next::Accept : Start::Next::Refine};
}

// Wilson and Hilferty, Abramowitz and Stegun 26.4.17, from the normal quantile x of p.
Start WilsonHilfertyStart(double x, double p, double df, double c, double g) {
    if (MCMV::IsMissing(x)) return {0.0, Start::Next::Fail};
    const double f = k0_222222 / df;
    const double B = std::sqrt(f) * x + 1.0 - f;
    double ch = 0.0;
    if (B != 0.0) {
        const double L = std::log(df) + 3.0 * std::log(std::fabs(B));
        if (L > kExponentCeiling) return {0.0, Start::Next::Fail};
        ch = std::copysign(ExpOrZero(L), B);
    }
    // p near 1
    if (ch > k2_2 * df + 6.0) ch = -2.0 * (std::log(1.0 - p) - c * std::log(ch * 0.5) + g);
    return {ch};
}

// For df up to 0.32 and p not small against it: Newton's method on a rational approximation of the
// upper tail.
Start SmallDegreesOfFreedomStart(double p, double c, double g) {
    double ch = k0_4;
    const double a1 = std::log(1.0 - p) + g;
    const double a2 = c * kLn2;
    for (int round = 0; round < kMaxStartRounds; ++round) {
        const double q = ch;
        const double p1 = 1.0 + ch * (ch + k4_67);
        const double p2 = ch * (k6_73 + ch * (ch + k6_66));
        const double t = (k4_67 + 2.0 * ch) / p1 - 0.5 - (k6_73 + ch * (3.0 * ch + k13_32)) / p2;
        const double E = ch * 0.5 + a1 + a2 + std::log(p2) - std::log(p1);
        if (E > kExponentCeiling) return {0.0, Start::Next::Fail};
        ch = ch - (1.0 - ExpOrZero(E)) / t;
        if (!(std::fabs(q / ch - 1.0) > k0_01)) break;
    }
    return {ch};
}

// One pass of the seven-term Taylor series about ch.
double TaylorStep(double ch, double t, double c) {
    const double b = t / ch;
    const double a = 0.5 * t - b * c;
    const double s1 =
        (210.0 + a * (140.0 + a * (105.0 + a * (84.0 + a * (70.0 + 60.0 * a))))) / 420.0;
    const double s2 = (420.0 + a * (735.0 + a * (966.0 + a * (1141.0 + 1278.0 * a)))) / 2520.0;
    const double s3 = (210.0 + a * (462.0 + a * (707.0 + 932.0 * a))) / 2520.0;
    const double s4 =
        (252.0 + a * (672.0 + 1182.0 * a) + c * (294.0 + a * (889.0 + 1740.0 * a))) / 5040.0;
    // 2264 and 1175 as published; the series itself has 264 and 175.
    const double s5 = (84.0 + 2264.0 * a + c * (1175.0 + 606.0 * a)) / 2520.0;
    const double s6 = (120.0 + c * (346.0 + 127.0 * c)) / 5040.0;
    return ch + t * (1.0 + 0.5 * t * s1 -
                     b * c * (s1 - b * (s2 - b * (s3 - b * (s4 - b * (s5 - b * s6))))));
}

}  // namespace

double MCDistFun::teskidfchi(const double& p, const double& df, long& code) {
    code = 0;
    if (!(p >= 0.0 && p < 1.0 && df > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    if (p == 0.0) return 0.0;

    const double xx = df * 0.5;
    const double g = dnlgam(xx);
    const double c = xx - 1.0;
    const double lp = std::log(p);
    const Start start = -k1_24 * lp > df ? SmallChiSquareStart(lp, xx, g)
                        : df > k0_32     ? WilsonHilfertyStart(probit(p), p, df, c, g)
                                         : SmallDegreesOfFreedomStart(p, c, g);
    if (start.next == Start::Next::Accept) return start.ch;
    if (start.next == Start::Next::Fail) {
        code = 2;
        return MCMV::Missing();
    }

    double ch = start.ch;
    for (int pass = 0; pass < kMaxPasses && ch > 0.0; ++pass) {
        const double q = ch;
        const double h = ch * 0.5;
        const double E = (xx * kLn2 + g + h) - c * std::log(ch);
        if (!(E <= kExponentCeiling)) break;
        long gammadCode = 0;
        const double pg = gammad(h, xx, true, gammadCode);
        if (gammadCode != 0) break;
        ch = TaylorStep(ch, ExpOrZero(E) * (p - pg), c);
        if (std::fabs(q - ch) <= ch * kTolerance) return ch;
    }
    return idfchb(p, df, start.ch, code);
}

double MCDistFun::idfchb(const double& p, const double& df, const double& start, long& code) {
    constexpr double kRelativeWidth = 1e-8;
    constexpr int kMaxHalvings = 40;

    code = 0;
    if (!(start > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    // In the units of gammad, half those of the chi-square scale. gammad fails for a bad a only,
    // so that its first call answers for all.
    const double a = df * 0.5;
    long gammadCode = 0;
    const auto compare = [&](double x) {
        const Numerics::Bounds bounds = Numerics::BoundLowerTail(x, a);
        if (bounds.low > p) return 1;
        if (bounds.high < p) return -1;
        const double value = gammad(x, a, true, gammadCode);
        return (value > p) - (value < p);
    };
    double lo = start * 0.25;
    double hi = start;
    if (compare(lo) > 0 || gammadCode != 0) {
        code = 2;
        return MCMV::Missing();
    }
    if (compare(hi) < 0) {
        hi = 2.0 * hi;
        if (compare(hi) < 0) {
            code = 2;
            return MCMV::Missing();
        }
    }
    double mid = (lo + hi) * 0.5;
    for (int i = 0; i < kMaxHalvings && mid * kRelativeWidth < hi - lo; ++i) {
        (compare(mid) > 0 ? hi : lo) = mid;
        mid = (lo + hi) * 0.5;
    }
    return 2.0 * mid;
}

double MCDistFun::IdfChi(double p, double df) {
    long code = 0;
    const double value = teskidfchi(p, df, code);
    return Numerics::OrMissing(value, code);
}

}  // namespace MAMath
