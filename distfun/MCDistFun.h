#pragma once

#include <vector>

#include "accredit/host/AccreditExport.h"

/// @file
/// The distribution functions, their inverses, and what is computed of grouped data.

/// Mathematics.
namespace MAMath {

/// Statistical distribution functions: normal, chi-square, F, t and binomial with their inverses,
/// ln(gamma), weighted percentiles and a confidence interval of the median.
///
/// Every function is static and keeps no state, so calls may overlap on any threads. None throws,
/// allocates, or runs for ever: each returns in bounded time for every double, infinities and
/// denormals included.
///
/// Failure is told in two ways. A function that cannot give a value returns the missing value
/// (`MCMV::Missing()`), always recognised by exact equality; and a function with a `long&` also
/// leaves a code there: 0 when the result is good, otherwise one of those listed at the function.
/// No public function returns a NaN: a NaN argument, and arguments so extreme that the arithmetic
/// has no value (as infinity less infinity), give the missing value. The missing value as an
/// argument is the number it is.
///
/// `Cdf` names a distribution function P(X <= x), `Pdf` a probability P(X = x), `Idf` an inverse
/// distribution function (quantile). Probabilities are fractions of 1, not percent, unless told.
/// Degrees of freedom need not be whole numbers.
class ACCREDIT_EXPORT MCDistFun {
public:
    MCDistFun() = delete;

    /// @name Normal distribution
    /// @{

    /// P(Z <= z) for a standard normal Z, by piecewise polynomials for the error function
    /// (Abramowitz and Stegun 26.2.29); 0 and 1 for infinite z. Missing for a NaN.
    static double CdfStdNorm(double z);

    /// P(X <= x) for a normal X: CdfStdNorm of (x - mean) / sd. Missing for sd <= 0, even where x
    /// equals the mean.
    static double CdfNorm(double x, double mean, double sd);

    /// The z with P(Z <= z) = p, by Algorithm AS 241. Missing unless 0 < p < 1.
    static double IdfStdNorm(double p);

    /// The normal quantile of p, from IdfStdNorm; exactly `mean` for p = 0.5. Missing unless 0 < p
    /// < 1 and sd > 0.
    static double IdfNorm(double p, double mean, double sd);

    /// @}
    /// @name Chi-square distribution
    /// @{

    /// P(X <= x) for a chi-square X, by the series and the continued fraction of Algorithm AS 239.
    /// 0 for x <= 0. Missing for df <= 0, whatever x is.
    static double CdfChi(double x, double df);

    /// The x with P(X <= x) = p, by Algorithm AS 91 with a bisection behind it; 0 for p = 0. Where
    /// the bisection answers, as far down the lower tail, it is within 5e-9 of the value, and an x
    /// below 5e-7 is within 2.5e-7. Missing unless 0 <= p < 1 and df > 0, or if no quantile was
    /// found.
    static double IdfChi(double p, double df);

    /// @}
    /// @name F and t distributions
    /// Values of the incomplete beta function, with its rounding: a probability near 0 or 1 may
    /// pass it by a few units of 1e-16, by some 1e-6 with 1e9 degrees of freedom, and beyond 1e13
    /// the logarithms of gamma leave it no digit at all.
    /// @{

    /// P(F <= x) with df1 and df2 degrees of freedom, from the incomplete beta function (Abramowitz
    /// and Stegun 26.6.2); 0 for x <= 0. Missing if either is <= 0.
    static double CdfF(double x, double df1, double df2);

    /// P(T <= x) with df degrees of freedom, from the incomplete beta function (Abramowitz and
    /// Stegun 26.7.1). With df above 1e7 and |x| above 1.7 the probability of
    /// the tail is off by up to a quarter. Missing for df <= 0.
    static double CdfT(double x, double df);

    /// The f with P(F <= f) = p, by Algorithm AS 109; 0 for p = 0. The iteration ends when the beta
    /// variable df1 f / (df2 + df1 f) moves by less than 1e-10: nine digits of f, fewer far out.
    /// Missing unless 0 <= p < 1 and both degrees of freedom are > 0, or if none was found.
    static double IdfF(double p, double df1, double df2);

    /// The t with P(T <= t) = p, by Algorithm AS 109; 0 for p = 0.5. The iteration ends when the
    /// beta variable df / (df + t^2) moves by less than 1e-10: nine digits of t, fewer far out, and
    /// near 0 with many degrees of freedom. Missing unless 0 < p < 1 and df > 0, or if none was
    /// found.
    static double IdfT(double p, double df);

    /// @}
    /// @name Binomial distribution with n trials and success probability p
    /// @{

    /// P(X <= x); x is taken down to a whole number. Exact summation from the mode outwards; the
    /// normal approximation of Peizer and Pratt where the first term underflows and for counts of
    /// 2^31 or more. Codes: 1 n < 1, p outside [0, 1], or a NaN; 3 n not a (finite) whole number.
    static double CdfBin(double x, double n, double p, long& code);

    /// P(X = x), as a product for small n, else from logarithms of gamma; 0 with code 0 if x is not
    /// a whole number. n may be fractional. Codes: 1 n < 1, p outside [0, 1], or a NaN; 2 no value
    /// within the range of doubles.
    static double PdfBin(double x, double n, double p, long& code);

    /// The largest whole number m with `CdfBin(m) <= prob` (within 2.8e-14), by a walk on
    /// probabilities from the normal quantile. -1 if there is none, or 0 if the walk begins above
    /// 0; n + 1 where rounding keeps the sum of all probabilities from passing `prob`. A walk of
    /// more than 1e7 counts is not taken, nor one that cannot go on because a count above 2^53 and
    /// the next are the same double: bisection finds m between the normal quantile and 0 or n, with
    /// `CdfBin(m) <= prob` unless m is 0, and more for the next count, or double if that is
    /// farther. Codes: 1 n not a (finite) whole number; 2 n < 1, p or prob outside [0, 1], or a
    /// NaN. The code is set to 0 only after these checks.
    static double IdfBin(double prob, double n, double p, long& code);

    /// @}
    /// @name Grouped data: distinct ascending values, each with a weight (frequency) >= 0
    /// @{

    /// The percentile at `percent` (0 to 100) of n values with n weights.
    ///
    /// `k` tells what is known of the classes behind the values. k < 1: nothing, each value is a
    /// point in the middle of its own weight, and `limits` is not read. k = 1: each value is the
    /// midpoint of a class of width `limits[0]`. k > 1: the values lie in classes whose lower ends
    /// are the k ascending `limits`; a class ends where the next begins, the last one as far above
    /// the first value in it as that value is above its limit.
    ///
    /// `result` gets the percentile, or the missing value if there is none at that place. Codes:
    /// -1 fewer than two values; 1 and 2, only for k < 1, `percent` lies below the place of the
    /// first value or above that of the last; 0 otherwise, whether or not there is a result (a NaN
    /// `percent` has none).
    /// An n or k above what the vectors hold counts as what they hold.
    static void GPTile(long n, double percent, const std::vector<double>& values,
                       const std::vector<double>& weights, const std::vector<double>& limits,
                       long k, double& result, long& code);

    /// A confidence interval of the median from order statistics, for n values with n weights that
    /// add up to N cases; `level` is the level asked for in percent. The ranks are those of the
    /// binomial distribution with p = 1/2 of the cases below the median.
    ///
    /// `lower` and `upper` get the two values that bracket the median. With `wantLevel`, `actual`
    /// gets the level that they reach, in percent: ranks being whole numbers, it differs from the
    /// one asked for. The whole range, with 100 in `actual`, is the answer for N = 2 and for a
    /// sample too small for the level. What has no value stays missing: all three if N is not a
    /// whole number >= 2, if `level` is outside [-100, 100], or if there are no values; a limit
    /// whose rank the weights do not reach. An n above what the vectors hold counts as what they
    /// hold.
    static void Mednci(long n, const std::vector<double>& values,
                       const std::vector<double>& weights, double N, double level, bool wantLevel,
                       double& lower, double& upper, double& actual);

    /// @}

    /// ln(gamma(x)) for x > 0, by pairs of polynomials and, from 8 on, Stirling's formula
    /// (Abramowitz and Stegun 6.1.41). Missing for x = 0. Below 0 there is no such function: the
    /// result is missing or a number without meaning.
    static double teskdnlgam(const double& x);

private:
    // Shape parameters, degrees of freedom and counts are doubles. Unless told otherwise a code is
    // 1 for a bad argument (a NaN shape included) with the missing value, and 2 for a computation
    // that found no value. A NaN in the other arguments gives some value, in no more time.

    /// The error function; odd in x bit for bit.
    static double derf(const double& x);
    /// 1 - derf(x), with full relative accuracy until it underflows to 0 near x = 26.5.
    static double derfc(const double& x);
    /// P(Z <= z) for a standard normal Z; 0.5 for a NaN.
    static double prbnrm(const double& z);
    /// The z with prbnrm(z) = p; missing unless 0 < p < 1.
    static double probit(const double& p);

    /// ln(gamma(x)) for x > 0; see teskdnlgam.
    static double dnlgam(const double& x);
    /// ln of the binomial coefficient n over k; code 1 unless 0 <= k <= n.
    static double dnlbnc(const double& n, const double& k, long& code);

    /// The regularised incomplete gamma integral with shape a: P(a, x) when `lower`, else
    /// Q(a, x) = 1 - P(a, x). Code 1 for a <= 0.
    static double gammad(const double& x, const double& a, const bool& lower, long& code);

    /// The chi-square quantile; codes 1 and 2.
    static double teskidfchi(const double& p, const double& df, long& code);
    /// The chi-square quantile by bisection between start / 2 and 2 * start, or 4 * start if that
    /// is not high enough; code 1 for start <= 0, code 2 if p is not between.
    static double idfchb(const double& p, const double& df, const double& start, long& code);

    /// The regularised incomplete beta function of fixed shapes; internal/IncompleteBeta.h.
    class IncompleteBeta;
    /// The regularised incomplete beta function I_x(a, b); code 1 for a <= 0 or b <= 0, and a NaN
    /// for a NaN x. Not clamped: rounding may carry it past 0 or 1.
    static double cdfbet(const double& x, const double& a, const double& b, long& code);
    /// The auxiliary function g(u) = (1 - u^2 + 2u ln u) / (1 - u)^2 of the Peizer-Pratt
    /// approximation; missing for u < 0.
    static double cbtaux(const double& u);

    /// P(F <= x); code 1 for degrees of freedom <= 0.
    static double teskcdff(const double& x, const double& df1, const double& df2, long& code);
    /// P(T <= x); code 1 for degrees of freedom <= 0.
    static double teskcdft(const double& x, const double& df, long& code);

    /// The x with I_x(a, b) = P; 0 and 1 for P = 0 and 1 whatever a and b are, otherwise -1 for
    /// bad arguments. Logarithms out of range give the mean a / (a + b).
    static double betinv(const double& P, const double& a, const double& b);
    /// The F quantile; codes 1 and 2.
    static double teskidff(const double& P, const double& df1, const double& df2, long& code);
    /// The t quantile; codes 1 and 2.
    static double teskidft(const double& P, const double& df, long& code);
};

}  // namespace MAMath
