#include "Regions.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "accredit/distfun/MCDistFun.h"

namespace DistFun {

// The standard's engines give the same numbers everywhere, its distributions do not.
class Random {
public:
    double Uniform(double low, double high) {
        return low + (high - low) * static_cast<double>(m_engine() >> 11) * 0x1p-53;
    }
    /// Uniform in the logarithm.
    double Log(double low, double high) { return std::exp(Uniform(std::log(low), std::log(high))); }
    double LogWhole(double low, double high) { return std::floor(Log(low, high)); }
    double WithSign(double size) { return (m_engine() & 1) != 0 ? size : -size; }

private:
    std::mt19937_64 m_engine{20};
};

namespace {

Arguments Normal(Random& random, double low, double high) {
    const double mean = random.Uniform(-100.0, 100.0);
    const double sd = random.Log(0.1, 100.0);
    return {mean + sd * random.Uniform(low, high), mean, sd};
}

// x at so many standard deviations from the mean.
Arguments ChiSquare(Random& random, double lowDf, double highDf, double low, double high) {
    const double df = random.Log(lowDf, highDf);
    return {df + random.Uniform(low, high) * std::sqrt(2.0 * df), df};
}

Arguments F(Random& random, double lowDf, double highDf, double low, double high) {
    const double df1 = random.Log(lowDf, highDf);
    const double df2 = random.Log(lowDf, highDf);
    return {std::exp(random.Uniform(low, high) * std::sqrt(2.0 / df1 + 2.0 / df2)), df1, df2};
}

Arguments Binomial(Random& random, double lowN, double highN, double low, double high) {
    const double n = random.LogWhole(lowN, highN);
    const double p = random.Uniform(0.2, 0.8);
    const double k = std::floor(n * p + random.Uniform(low, high) * std::sqrt(n * p * (1.0 - p)));
    return {std::clamp(k, 1.0, n - 1.0), n, p};
}

Arguments SmallBinomial(Random& random, double highN) {
    const double n = random.LogWhole(2.0, highN + 1.0);
    return {std::floor(random.Uniform(1.0, n)), n, random.Uniform(0.05, 0.95)};
}

Arguments BesideStep(Random& random) {
    const Arguments a = Binomial(random, 20.0, 1000.0, -3.0, 3.0);
    long code = 0;
    const double step = MAMath::MCDistFun::CdfBin(a[0], a[1], a[2], code);
    return {step * (1.0 + random.Uniform(-1e-15, 1e-15)), a[1], a[2]};
}

}  // namespace

const std::vector<Region>& Regions() {
    using R = Random;
    using A = Arguments;
    static const std::vector<Region> regions = {
        {"CdfStdNorm", "one polynomial of erfc, -37 < z < -8",
         [](R& r) -> A { return {r.Uniform(-37.0, -8.0)}; }},
        {"CdfStdNorm", "the same, -8 < z < 0", [](R& r) -> A { return {r.Uniform(-8.0, 0.0)}; }},
        {"CdfStdNorm", "polynomials of erf, 0 < z < 3.1",
         [](R& r) -> A { return {r.Uniform(0.0, 3.1)}; }},
        {"CdfStdNorm", "16th powers, 3.2 < z < 9.7",
         [](R& r) -> A { return {r.Uniform(3.2, 9.7)}; }},

        {"CdfNorm", "x up to 8 sd below the mean", [](R& r) -> A { return Normal(r, -8.0, 0.0); }},
        {"CdfNorm", "x up to 8 sd above the mean", [](R& r) -> A { return Normal(r, 0.0, 8.0); }},

        {"IdfStdNorm", "central, 0.075 < p < 0.925",
         [](R& r) -> A { return {r.Uniform(0.075, 0.925)}; }},
        {"IdfStdNorm", "intermediate, 1.4e-11 < p < 0.075",
         [](R& r) -> A { return {r.Log(1.4e-11, 0.075)}; }},
        {"IdfStdNorm", "far, 1e-300 < p < 1.4e-11",
         [](R& r) -> A { return {r.Log(1e-300, 1.38e-11)}; }},
        {"IdfStdNorm", "upper tail, 1e-15 < 1 - p < 0.075",
         [](R& r) -> A { return {1.0 - r.Log(1e-15, 0.075)}; }},

        {"IdfNorm", "0 < p < 1, mean 10 to 100, sd 1 to 10",
         [](R& r) -> A {
             return {r.Uniform(0.0, 1.0), r.Uniform(10.0, 100.0), r.Uniform(1.0, 10.0)};
         }},

        {"CdfChi", "exponential, df = 2",
         [](R& r) -> A {
             return {r.Log(1e-3, 100.0), 2.0};
         }},
        {"CdfChi", "series, df 0.1 to 1, x < 2",
         [](R& r) -> A {
             return {r.Log(1e-6, 2.0), r.Log(0.1, 1.0)};
         }},
        {"CdfChi", "series, df 1 to 200, x < df",
         [](R& r) -> A {
             const double df = r.Log(1.0, 200.0);
             return {df * r.Uniform(0.3, 1.0), df};
         }},
        {"CdfChi", "series, df 10 to 100, far lower tail",
         [](R& r) -> A {
             const double df = r.Log(10.0, 100.0);
             return {df * r.Log(1e-3, 0.1), df};
         }},
        {"CdfChi", "fraction, df 1 to 200, x > df",
         [](R& r) -> A {
             const double df = r.Log(1.0, 200.0);
             return {std::max(df, 2.0) * r.Uniform(1.01, 3.0), df};
         }},
        {"CdfChi", "series, df 200 to 1e6, 4 sd below",
         [](R& r) -> A { return ChiSquare(r, 200.0, 1e6, -4.0, 0.0); }},
        {"CdfChi", "fraction, df 200 to 1e6, 4 sd above",
         [](R& r) -> A { return ChiSquare(r, 200.0, 1e6, 0.0, 4.0); }},
        {"CdfChi", "both, df 1e7 to 1e9, within 4 sd",
         [](R& r) -> A { return ChiSquare(r, 1e7, 1e9, -4.0, 4.0); }},
        {"CdfChi", "normal approximation, df 1e8 to 1e10, x by df",
         [](R& r) -> A {
             const double df = r.Log(1e8, 1e10);
             return {df * r.Uniform(1.0 - 2e-8, 1.0), df};
         }},

        {"IdfChi", "first term alone, p < 1e-8, df 1 to 2",
         [](R& r) -> A {
             return {r.Log(1e-60, 1e-8), r.Uniform(1.0, 2.0)};
         }},
        {"IdfChi", "small chi-square start, df 2 to 60",
         [](R& r) -> A {
             const double df = r.Log(2.0, 60.0);
             return {std::exp(-df * r.Uniform(0.85, 3.0)), df};
         }},
        {"IdfChi", "Wilson-Hilferty start, df 1 to 200, p > 0.5",
         [](R& r) -> A {
             return {r.Uniform(0.5, 0.999), r.Log(1.0, 200.0)};
         }},
        {"IdfChi", "the same, df 20 to 200, 1e-6 < p < 0.5",
         [](R& r) -> A {
             return {r.Log(1e-6, 0.5), r.Log(20.0, 200.0)};
         }},
        {"IdfChi", "the same, df 1 to 100, 1e-15 < 1 - p < 1e-5",
         [](R& r) -> A {
             return {1.0 - r.Log(1e-15, 1e-5), r.Log(1.0, 100.0)};
         }},
        {"IdfChi", "small df start, df 0.02 to 0.32",
         [](R& r) -> A {
             return {r.Uniform(0.985, 0.9999), r.Log(0.02, 0.319)};
         }},
        {"IdfChi", "Wilson-Hilferty start, df 200 to 1e5",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), r.Log(200.0, 1e5)};
         }},

        {"CdfF", "closed form, df1 = 2",
         [](R& r) -> A {
             return {r.Log(1e-2, 1e2), 2.0, r.Log(1.0, 100.0)};
         }},
        {"CdfF", "power series or fraction, df1 0.2 to 2",
         [](R& r) -> A {
             return {r.Log(1e-2, 1e2), r.Uniform(0.2, 2.0), r.Log(0.2, 100.0)};
         }},
        {"CdfF", "fraction, df 2 to 100, x < 1",
         [](R& r) -> A {
             return {r.Uniform(0.1, 1.0), r.Log(2.1, 100.0), r.Log(2.1, 100.0)};
         }},
        {"CdfF", "fraction, df 2 to 100, x > 1",
         [](R& r) -> A {
             return {r.Uniform(1.0, 10.0), r.Log(2.1, 100.0), r.Log(2.1, 100.0)};
         }},
        {"CdfF", "fraction, df 10 to 100, far lower tail",
         [](R& r) -> A {
             return {r.Log(1e-6, 1e-2), r.Log(10.0, 50.0), r.Log(10.0, 100.0)};
         }},
        {"CdfF", "fraction, df 1e3 to 1e6, within 4 sd",
         [](R& r) -> A { return F(r, 1e3, 1e6, -4.0, 4.0); }},
        {"CdfF", "normal approximation or fraction, df 1e10 to 1e12",
         [](R& r) -> A { return F(r, 1e10, 1e12, -4.0, 4.0); }},

        {"CdfT", "arctangent, df = 1",
         [](R& r) -> A {
             return {r.WithSign(r.Log(1e-3, 1e3)), 1.0};
         }},
        {"CdfT", "power series or fraction, df 1.5 to 100, |x| < 1",
         [](R& r) -> A {
             return {r.Uniform(-1.0, 1.0), r.Log(1.5, 100.0)};
         }},
        {"CdfT", "power series, df 1.5 to 100, 1 < x < 50",
         [](R& r) -> A {
             return {r.Log(1.01, 50.0), r.Log(1.5, 100.0)};
         }},
        {"CdfT", "power series, df 1.5 to 100, -50 < x < -1",
         [](R& r) -> A {
             return {-r.Log(1.01, 50.0), r.Log(1.5, 100.0)};
         }},
        {"CdfT", "power series, df 2 to 30, x < -100",
         [](R& r) -> A {
             return {-r.Log(1e2, 1e8), r.Log(2.1, 30.0)};
         }},
        {"CdfT", "power series or fraction, df 100 to 1e4, |x| < 6",
         [](R& r) -> A {
             return {r.Uniform(-6.0, 6.0), r.Log(100.0, 1e4)};
         }},
        {"CdfT", "fraction or normal approximation, df 1e6 to 1e8, |x| < 6",
         [](R& r) -> A {
             return {r.Uniform(-6.0, 6.0), r.Log(1e6, 1e8)};
         }},

        {"IdfF", "closed form, df1 = 2",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), 2.0, r.Log(2.1, 100.0)};
         }},
        {"IdfF", "normal start, df 2 to 100, 0.001 < p < 0.999",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), r.Log(2.1, 100.0), r.Log(2.1, 100.0)};
         }},
        {"IdfF", "the same, 1e-30 < p < 1e-3",
         [](R& r) -> A {
             return {r.Log(1e-30, 1e-3), r.Log(2.1, 100.0), r.Log(2.1, 100.0)};
         }},
        {"IdfF", "chi-square start, df 0.2 to 2",
         [](R& r) -> A {
             return {r.Uniform(0.05, 0.95), r.Uniform(0.2, 1.9), r.Uniform(0.2, 1.9)};
         }},
        {"IdfF", "normal start, df 1e3 to 1e6",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), r.Log(1e3, 1e6), r.Log(1e3, 1e6)};
         }},

        {"IdfT", "arcsine, df = 1",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), 1.0};
         }},
        {"IdfT", "closed form, df = 2",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), 2.0};
         }},
        {"IdfT", "chi-square start, df 0.2 to 1",
         [](R& r) -> A {
             return {r.Uniform(0.05, 0.95), r.Uniform(0.2, 0.99)};
         }},
        {"IdfT", "chi-square start, df 2 to 100, 0.001 < p < 0.999",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), r.Log(2.1, 100.0)};
         }},
        {"IdfT", "the same, 1e-30 < p < 1e-3",
         [](R& r) -> A {
             return {r.Log(1e-30, 1e-3), r.Log(2.1, 100.0)};
         }},
        {"IdfT", "chi-square start, df 1e3 to 1e6",
         [](R& r) -> A {
             return {r.Uniform(0.001, 0.999), r.Log(1e3, 1e6)};
         }},

        {"CdfBin", "walk, n 2 to 30", [](R& r) -> A { return SmallBinomial(r, 30.0); }},
        {"CdfBin", "walk, n 100 to 1e4, within 5 sd",
         [](R& r) -> A { return Binomial(r, 100.0, 1e4, -5.0, 5.0); }},
        {"CdfBin", "walk, n 5e3 to 1e5, 8 to 30 sd below",
         [](R& r) -> A { return Binomial(r, 5e3, 1e5, -30.0, -8.0); }},
        {"CdfBin", "walk, n 1e5 to 1e8, within 5 sd",
         [](R& r) -> A { return Binomial(r, 1e5, 1e8, -5.0, 5.0); }},
        {"CdfBin", "normal approximation, n 2e10 to 1e12",
         [](R& r) -> A { return Binomial(r, 2e10, 1e12, -5.0, 5.0); }},

        {"PdfBin", "product, n 2 to 33", [](R& r) -> A { return SmallBinomial(r, 33.0); }},
        {"PdfBin", "log gamma, n 34 to 1e4, within 5 sd",
         [](R& r) -> A { return Binomial(r, 34.0, 1e4, -5.0, 5.0); }},
        {"PdfBin", "log gamma, n 5e3 to 1e5, 8 to 30 sd below",
         [](R& r) -> A { return Binomial(r, 5e3, 1e5, -30.0, -8.0); }},
        {"PdfBin", "log gamma, n 1e5 to 1e9, within 5 sd",
         [](R& r) -> A { return Binomial(r, 1e5, 1e9, -5.0, 5.0); }},

        {"IdfBin", "n 2 to 30",
         [](R& r) -> A {
             return {r.Uniform(0.0, 1.0), r.LogWhole(2.0, 31.0), r.Uniform(0.05, 0.95)};
         }},
        {"IdfBin", "n 100 to 1e4",
         [](R& r) -> A {
             return {r.Uniform(0.0, 1.0), r.LogWhole(100.0, 1e4), r.Uniform(0.05, 0.95)};
         }},
        {"IdfBin", "n 100 to 1e4, 1e-12 < prob < 1e-4",
         [](R& r) -> A {
             return {r.Log(1e-12, 1e-4), r.LogWhole(100.0, 1e4), r.Uniform(0.3, 0.95)};
         }},
        {"IdfBin", "n 1e5 to 1e8",
         [](R& r) -> A {
             return {r.Uniform(0.0, 1.0), r.LogWhole(1e5, 1e8), r.Uniform(0.05, 0.95)};
         }},
        {"IdfBin", "n 20 to 1e3, prob within 1e-15 of a step", BesideStep},

        {"teskdnlgam", "-ln of a polynomial, 1e-10 < x < 0.5",
         [](R& r) -> A { return {r.Log(1e-10, 0.5)}; }},
        {"teskdnlgam", "polynomials, 0.5 < x < 3.5, not near 1 and 2",
         [](R& r) -> A {
             const double x = r.Uniform(0.5, 3.5);
             const double distance = std::min(std::fabs(x - 1.0), std::fabs(x - 2.0));
             return {distance < 0.1 ? x + 0.2 : x};
         }},
        {"teskdnlgam", "the same, within 1e-8 to 0.1 of 1 and 2",
         [](R& r) -> A {
             return {(r.Uniform(0.0, 1.0) < 0.5 ? 1.0 : 2.0) + r.WithSign(r.Log(1e-8, 0.1))};
         }},
        {"teskdnlgam", "polynomials, 3.5 < x < 8", [](R& r) -> A { return {r.Uniform(3.5, 8.0)}; }},
        {"teskdnlgam", "Stirling, 8 < x < 1e4", [](R& r) -> A { return {r.Log(8.0, 1e4)}; }},
        {"teskdnlgam", "Stirling, 1e4 < x < 1e15", [](R& r) -> A { return {r.Log(1e4, 1e15)}; }},
    };
    return regions;
}

std::vector<Arguments> Draw(const Region& region, std::size_t count) {
    Random random;
    std::vector<Arguments> result(count);
    for (Arguments& arguments : result) arguments = region.draw(random);
    return result;
}

}  // namespace DistFun
