#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::ExpOrZero;
using Numerics::kExponentFloor;
using Numerics::Pair;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Fail(long& code, long value) {
    code = value;
    return MCMV::Missing();
}

bool IsWhole(double n) { return n == std::floor(n) && n != kInfinity; }

bool IsProbability(double p) { return p >= 0.0 && p <= 1.0; }

// Adds to `sum` up to `steps` probabilities that lead away from the mode, until they no longer
// count: the one with probability f times ratio(0), that times ratio(1), and so on. The ratios are
// taken in pairs, so that their divisions keep up with the products, each of which waits for the
// last.
template <class Ratio>
double AddWhileItCounts(double sum, double f, double steps, Ratio ratio) {
    double t = f;
    Pair step = {0.0, 1.0};
    for (auto left = static_cast<std::int64_t>(steps); left > 0; left -= 2) {
        const Pair ratios = ratio(step);
        step += 2.0;
        t *= ratios[0];
        if (!(sum + t > sum)) return sum;
        sum += t;
        if (left == 1) return sum;
        t *= ratios[1];
        if (!(sum + t > sum)) return sum;
        sum += t;
    }
    return sum;
}

// Adds to `sum` the probabilities below s, from the largest down. f is the probability of s,
// r = q / p.
double AddBelow(double sum, double f, double s, double n, double r) {
    return AddWhileItCounts(sum, f, s, [=](Pair step) {
        const Pair i = s - 1.0 - step;
        return (i + 1.0) / (n - i) * r;
    });
}

// Adds to `sum` the probabilities above m up to that of k. f is the probability of m, r = p / q.
double AddAbove(double sum, double f, double m, double k, double n, double r) {
    return AddWhileItCounts(sum, f, k - m, [=](Pair step) {
        const Pair i = m + 1.0 + step;
        return (n + 1.0 - i) / i * r;
    });
}

// P ln(P / p), and its limit for a P that rounding has taken to 0 or below.
double Deviance(double P, double p) { return P > 0.0 ? P * std::log(P / p) : 0.0; }

// The deviate of P(X <= k) by Peizer and Pratt, in its logarithmic form.
double PeizerPratt(double k, double n, double p, double q) {
    const double D0 = k / n - p;
    const double D = ((D0 + 0.5 / n) + 1.0) - 1.0;
    if (D == 0.0) return 0.0;
    const double P = p + D;
    const double Q = 1.0 - P;
    const double H = Deviance(Q, q) + Deviance(P, p);
    if (H <= 0.0) return 0.0;
    const double G = (q / (k + 1.0) - p / (n - k) + (0.5 - p) / (n + 1.0)) / (50.0 * n);
    const double R = ((2.0 - p) / (3.0 * n) + D0 + G) / std::fabs(D);
    return (n / std::sqrt(n + 1.0 / 6.0)) * std::sqrt(2.0 * H) * R;
}

}  // namespace

double MCDistFun::CdfBin(double x, double n, double p, long& code) {
    constexpr double kFirstBeyond32Bits = 2147483648.0;

    code = 0;
    if (std::isnan(x) || std::isnan(n) || std::isnan(p)) return Fail(code, 1);
    if (!IsWhole(n)) return Fail(code, 3);
    if (n < 1.0 || !IsProbability(p)) return Fail(code, 1);
    const double k = std::floor(x);
    const double q = 1.0 - p;
    if (p == 0.0) return k >= 0.0 ? 1.0 : 0.0;
    if (p == 1.0) return k >= n ? 1.0 : 0.0;
    if (k < 0.0) return 0.0;
    if (k == 0.0) return ExpOrZero(n * std::log(q));
    if (k >= n) return 1.0;

    if (!(k < kFirstBeyond32Bits && (n + 1.0) * p < kFirstBeyond32Bits)) {
        return prbnrm(PeizerPratt(k, n, p, q));
    }
    const double mode = std::floor((n + 1.0) * p);
    const double m = std::min(k, mode);
    double y = 0.0;
    if (m == 0.0) {
        y = n * std::log(q);
    } else {
        const double L = dnlgam(n + 1.0) - dnlgam(m + 1.0) - dnlgam(n + 1.0 - m);
        y = p == 0.5 ? n * std::log(0.5) + L : m * std::log(p) + L + (n - m) * std::log(q);
    }
    if (!(y >= kExponentFloor)) return prbnrm(PeizerPratt(k, n, p, q));

    const double f = std::exp(y);
    double sum = AddBelow(f, f, m, n, q / p);
    if (k > mode) sum = AddAbove(sum, f, mode, k, n, p / q);
    return sum >= 1.0 ? 1.0 : sum;
}

double MCDistFun::PdfBin(double x, double n, double p, long& code) {
    constexpr double kExponentCeiling = 709.0;

    code = 0;
    if (!(IsProbability(p) && n >= 1.0) || std::isnan(x)) return Fail(code, 1);
    if (x != std::floor(x + 0.5)) return 0.0;
    if (x < 0.0 || x > n) return 0.0;
    if (p == 0.0) return x == 0.0 ? 1.0 : 0.0;
    if (p == 1.0) return x == n ? 1.0 : 0.0;
    if (x == n) return std::pow(p, n);
    if (x == 0.0) return std::pow(1.0 - p, n);
    long dnlbncCode = 0;
    const double y = dnlbnc(n, x, dnlbncCode) + x * std::log(p) + (n - x) * std::log(1.0 - p);
    if (!(y <= kExponentCeiling)) return Fail(code, 2);
    return ExpOrZero(y);
}

namespace {

// The searches walk from the count y with c = P(X <= y) and f = P(X = y), one count a step, and
// give nothing if they take more than kMaxSteps. What is left of one need not be walked once the
// next probability is 0, below 0 or no number, because it stays so; or once it is so small that c
// cannot meet prob any more, because beyond the mode probabilities only shrink.
constexpr int kMaxSteps = 10'000'000;
// More than rounding moves c by in a step.
constexpr double kStepError = 1e-16;

// From here on the next count is the same double.
constexpr double kFirstLikeItsNext = 9007199254740992.0;

// r = q / p. Ends at 0 if it does not start there.
std::optional<double> WalkDown(double y, double c, double f, double prob, double n, double r) {
    double m = y;
    for (int step = 0; step < kMaxSteps; ++step) {
        c -= f;
        const double m2 = m - 1.0;
        if (c <= prob || m2 <= 0.0) return m2;
        const double next = f * r * (m / (n - m2));
        const bool stays = c - next == c || c - kMaxSteps * (next + kStepError) > prob;
        if (!(next > 0.0) || (next <= f && stays)) {
            if (y <= kMaxSteps) return 0.0;
            break;
        }
        f = next;
        m = m2;
    }
    return std::nullopt;
}

// r = p / q. Ends at n + 1.
std::optional<double> WalkUp(double y, double c, double f, double prob, double n, double r) {
    double m = y;
    for (int step = 0; step < kMaxSteps; ++step) {
        const double m1 = m + 1.0;
        const double next = f * r * ((n - m) / m1);
        c += next;
        if (c > prob || m > n) return m;
        const bool stays = c + next == c || c + kMaxSteps * (next + kStepError) <= prob;
        if (!(next > 0.0) || (next <= f && stays)) {
            if (n < kFirstLikeItsNext && n + 2.0 - y <= kMaxSteps) return n + 1.0;
            break;
        }
        f = next;
        m = m1;
    }
    return std::nullopt;
}

}  // namespace

double MCDistFun::IdfBin(double prob, double n, double p, long& code) {
    constexpr double kTolerance = 128.0 * 2.220446049250313e-16;

    if (std::isnan(prob) || std::isnan(n) || std::isnan(p)) return Fail(code, 2);
    if (!IsWhole(n)) return Fail(code, 1);
    if (n < 1.0 || !IsProbability(p) || !IsProbability(prob)) return Fail(code, 2);
    code = 0;
    if (prob == 1.0) return p > 0.0 ? n : 0.0;
    if (p == 1.0) return n - 1.0;
    if (prob == 0.0) return -1.0;

    const double q = 1.0 - p;
    const double w = n * p;
    double y = std::floor(std::sqrt(w * q) * probit(prob) + w - 0.5);
    if (y > n) y = n;
    if (y < 0.0) y = 0.0;
    long innerCode = 0;
    const double c = CdfBin(y, n, p, innerCode);
    if (std::fabs(c - prob) < kTolerance) return y;
    const double f = PdfBin(y, n, p, innerCode);
    const std::optional<double> met =
        c > prob ? WalkDown(y, c, f, prob, n, q / p) : WalkUp(y, c, f, prob, n, p / q);
    if (met) return *met;

    // By bisection. The lower end stands without a question, as it does for the walk; the upper one
    // has probability 1. Ends with neighbouring counts, or doubles where these are farther apart.
    double low = c > prob ? 0.0 : y;
    double high = c > prob ? y : n;
    for (;;) {
        const double middle = low + std::floor((high - low) / 2.0);
        if (middle <= low || middle >= high) return low;
        (CdfBin(middle, n, p, innerCode) <= prob ? low : high) = middle;
    }
}

}  // namespace MAMath
