#include <array>
#include <cmath>
#include <cstddef>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::ExpOrZero;
using Numerics::Horner;
using Numerics::OrMissing;
using Numerics::Pair;

namespace {

using Polynomial13 = std::array<double, 13>;

// derf(x) / |x| for |x| < 2.2: row k holds for k <= s < k + 1 where s = x^2, as a polynomial in
// t = s - k, powers 12 to 0. Piecewise fits; row 0 is close to the Maclaurin series, Abramowitz
// and Stegun 7.1.5.
constexpr std::array<Polynomial13, 5> kErfNearZero = {{
    {5.958930743e-11, -1.13739022964e-09, 1.466005199839e-08, -1.635035446196e-07,
     1.6461004480962e-06, -1.492559551950604e-05, 0.00012055331122299264, -0.0008548326981129666,
     0.005223977624823223, -0.026866170645077334, 0.11283791670954882, -0.3761263890318375,
     1.1283791670955126},
    {2.372510631e-11, -4.5493253732e-10, 5.90362766598e-09, -6.642090827576e-08,
     6.7595634268133e-07, -6.21188515924e-06, 5.10388300970969e-05, -0.00037015410692956176,
     0.00233307631218881, -0.012549884771821921, 0.05657061146827042, -0.21379664776456006,
     0.8427007929497149},
    {9.49905026e-12, -1.8310229805e-10, 2.39463074e-09, -2.721444369609e-08, 2.8045522331686e-07,
     -2.61830022482897e-06, 2.195455056768781e-05, -0.00016358986921372656, 0.0010705215356411031,
     -0.006082847181135901, 0.029869784652462584, -0.13055593046562267, 0.674933236039655},
    {3.82722073e-12, -7.421598602e-11, 9.793057408e-10, -1.126008898854e-08, 1.1775134830784e-07,
     -1.1199275838265e-06, 9.62023443095201e-06, -7.404402135070773e-05, 0.0005068999365414488,
     -0.003075530514392729, 0.016689778925531657, -0.08548534594781312, 0.5690907664239364},
    {1.55296588e-12, -3.032205868e-11, 4.0424830707e-10, -4.71135111493e-09, 5.011915876293e-08,
     -4.8722516178974e-07, 4.30683284629395e-06, -3.445026145385764e-05, 0.00024879276133931664,
     -0.0016294094174807928, 0.009887863739323505, -0.05962426839442304, 0.49766113250947636},
}};

// The 16th root of 1 - derf(w) for 2.2 <= w < 6.9: row k - 2 holds for k <= w < k + 1, as a
// polynomial in t = w - k, powers 12 to 0. The root is nearly straight where derfc falls through
// twenty decades. Piecewise fits.
constexpr std::array<Polynomial13, 5> kErfcRoot = {{
    {-2.9734388465e-10, 2.69776334046e-09, -6.40788827665e-09, -1.6678201321e-08,
     -2.1854388148686e-07, 2.66246030457984e-06, 1.612722157047886e-05, -0.00025616361025506627,
     0.00015380842432375364, 0.00815533022524928, -0.014022836638963193, -0.19746892495383023,
     0.7151172032884284},
    {-1.951073787e-11, -3.2302692214e-10, 5.22461866919e-09, 3.42940918551e-09,
     -3.5772874310272e-07, 1.9999935792654e-07, 2.687044575042908e-05, -0.00011843240273775776,
     -0.0008099172895603227, 0.006610629705022412, 0.009095309223548273, -0.20160072778491014,
     0.5116969671872764},
    {3.147682272e-11, -4.8465972408e-10, 6.3675740242e-10, 3.377623323271e-08, -1.5451139637086e-07,
     -2.03340624738438e-06, 1.947204525295057e-05, 2.854147231653228e-05, -0.0010156506315220028,
     0.0027118700352009566, 0.023280950354228107, -0.16725021123116876, 0.32490054966649434},
    {2.31936337e-11, -6.303206648e-11, -2.64888267434e-09, 2.050708040581e-08, 1.1371857327578e-07,
     -2.11211337219663e-06, 3.68797328322935e-06, 9.823686253424796e-05, -0.0006586024399045536,
     -0.0007528581489523087, 0.025854344242029606, -0.11637092784486193, 0.1826733677529661},
    {-3.67789363e-12, 2.0876046746e-10, -1.93319027226e-09, -4.35953392472e-09, 1.8006992266137e-07,
     -7.8441223763969e-07, -6.75407647949153e-06, 8.428418334440096e-05, -0.00017604388937031816,
     -0.002397296114350716, 0.02064129023876023, -0.06905562880005864, 0.09084526782065479},
}};
constexpr int kErfcRootFirst = 2;

}  // namespace

double MCDistFun::derf(const double& x) {
    const double w = std::fabs(x);
    double y = 1.0;
    if (w == 0.0) {
        y = 0.0;
    } else if (w < 2.2) {
        const double s = w * w;
        const int k = static_cast<int>(s);
        y = Horner(kErfNearZero[static_cast<std::size_t>(k)], s - k) * w;
    } else if (w < 6.9) {
        const int k = static_cast<int>(w);
        double v = Horner(kErfcRoot[static_cast<std::size_t>(k - kErfcRootFirst)], w - k);
        v *= v;
        v *= v;
        v *= v;
        v *= v;
        y = 1.0 - v;
    }
    return x < 0.0 ? -y : y;
}

namespace {

// derfc(w) exp(w^2) / t for w > 0 where t = c / (w + c), as a polynomial in u = t - 0.5, powers 22
// to 0: one fit that holds from 0 to infinity.
constexpr std::array<double, 23> kErfcScaled = {
    0.0012710976495261409, 0.00011931402283834095, -0.003963850973605135, -0.0008707796353172959,
    0.007736725283135267,  0.003833351262648873,   -0.012722381378212275, -0.013382364453346007,
    0.016131532973325226,  0.039097684558848406,   0.002493672000535033,  -0.0838864557023002,
    -0.11946395996432542,  0.016620792496936737,   0.35752427444953105,   0.8052764087529106,
    1.1890298290927332,    1.3704021768233816,     1.313146538310231,     1.0792551515585667,
    0.7743681991195386,    0.49016508058531844,    0.2753747415973768};
constexpr double kErfcScale = 3.97886080735226;

}  // namespace

double MCDistFun::derfc(const double& x) {
    const double w = std::fabs(x);
    if (w == 0.0) return 1.0;
    const double t = kErfcScale / (w + kErfcScale);
    const double y = Horner(kErfcScaled, t - 0.5) * t;
    // exp(-w^2) alone would underflow and lose digits before the product does.
    const double r = y > 0.0 ? ExpOrZero(std::log(y) - w * w) : 0.0;
    return x < 0.0 ? 2.0 - r : r;
}

// Abramowitz and Stegun 26.2.29: each half by the function that does not cancel there.
double MCDistFun::prbnrm(const double& z) {
    constexpr double kSqrt2 = 1.4142135623730951;
    if (z > 0.0) return (derf(z / kSqrt2) + 1.0) * 0.5;
    if (z < 0.0) return derfc(-(z / kSqrt2)) * 0.5;
    return 0.5;
}

namespace {

using Polynomial8 = std::array<double, 8>;

// Algorithm AS 241, PPND16: three pairs of numerator and denominator, powers 7 to 0.

// |q| <= 0.425 where q = p - 0.5: the quantile over q, in r = 0.180625 - q^2.
constexpr Polynomial8 kCentralNumerator = {
    2509.0809287301227, 33430.57558358813,  67265.7709270087,   45921.95393154987,
    13731.69376550946,  1971.5909503065513, 133.14166789178438, 3.3871328727963665};
constexpr Polynomial8 kCentralDenominator = {
    5226.495278852854, 28729.085735721943, 39307.89580009271, 21213.794301586597,
    5394.196021424751, 687.1870074920579,  42.31333070160091, 1.0};

// 0 < r <= 5 where r = sqrt(-ln of the tail): the size of the quantile, in r - 1.6.
constexpr Polynomial8 kIntermediateNumerator = {
    0.0007745450142783414, 0.022723844989269184, 0.2417807251774506, 1.2704582524523684,
    3.6478483247632045,    5.769497221460691,    4.630337846156546,  1.4234371107496835};
constexpr Polynomial8 kIntermediateDenominator = {
    1.0507500716444169e-09, 0.0005475938084995345, 0.015198666563616457, 0.14810397642748008,
    0.6897673349851,        1.6763848301838038,    2.053191626637759,    1.0};

// r > 5: the size of the quantile, in r - 5.
constexpr Polynomial8 kFarNumerator = {
    2.0103343992922881e-07, 2.7115555687434876e-05, 0.0012426609473880784, 0.026532189526576124,
    0.29656057182850487,    1.7848265399172913,     5.463784911164114,     6.657904643501103};
constexpr Polynomial8 kFarDenominator = {
    2.0442631033899397e-15, 1.421511758316446e-07, 1.8463183175100548e-05, 0.0007868691311456133,
    0.014875361290850615,   0.1369298809227358,    0.599832206555888,      1.0};

// Numerator and denominator side by side, as two chains of the same length.
Pair Both(const Polynomial8& numerator, const Polynomial8& denominator, double r) {
    Pair value = {numerator[0], denominator[0]};
    for (std::size_t i = 1; i < numerator.size(); ++i)
        value = value * r + Pair{numerator[i], denominator[i]};
    return value;
}

}  // namespace

double MCDistFun::probit(const double& p) {
    if (p <= 0.0 || p >= 1.0) return MCMV::Missing();
    const double q = p - 0.5;
    if (q == 0.0) return 0.0;
    if (std::fabs(q) <= 0.425) {
        const double r = 0.180625 - q * q;
        const Pair central = Both(kCentralNumerator, kCentralDenominator, r);
        return q * central[0] / central[1];
    }
    const double tail = q < 0.0 ? p : 1.0 - p;
    const double r = std::sqrt(-std::log(tail));
    const Pair both = r <= 5.0 ? Both(kIntermediateNumerator, kIntermediateDenominator, r - 1.6)
                               : Both(kFarNumerator, kFarDenominator, r - 5.0);
    const double v = both[0] / both[1];
    return q < 0.0 ? -v : v;
}

double MCDistFun::CdfStdNorm(double z) { return std::isnan(z) ? MCMV::Missing() : prbnrm(z); }

double MCDistFun::CdfNorm(double x, double mean, double sd) {
    if (sd <= 0.0) return MCMV::Missing();
    return CdfStdNorm((x - mean) / sd);
}

double MCDistFun::IdfStdNorm(double p) { return OrMissing(probit(p)); }

double MCDistFun::IdfNorm(double p, double mean, double sd) {
    if (sd <= 0.0 || std::isnan(sd)) return MCMV::Missing();
    if (p == 0.5) return OrMissing(mean);
    const double z = probit(p);
    if (MCMV::IsMissing(z)) return z;
    return OrMissing(z * sd + mean);
}

}  // namespace MAMath
