#include <gtest/gtest.h>

#include <algorithm>

#include "Precision.h"

// What must hold between the functions, and between them and the C library, over their ranges.

namespace {

using F = MCDistFun;

TEST(NormalFamily, AgreesWithTheCLibraryAndIsOdd) {
    for (double x = 0.001; x < 26.5; x *= 1.0007) {
        ASSERT_LE(RelativeError(F::derf(x), std::erf(x)), 5e-16) << x;
        ASSERT_LE(RelativeError(F::derfc(x), std::erfc(x)), 2e-13) << x;
        ASSERT_EQ(F::derf(-x), -F::derf(x)) << x;
        ASSERT_EQ(F::derfc(-x), 2.0 - F::derfc(x)) << x;
    }
    EXPECT_NEAR(F::derfc(26.5357) / 3.3e-308, 1.0, 0.02) << "beside the underflow";
}

TEST(NormalFamily, QuantilesInvertProbabilities) {
    for (double z = -37.0; z < 5.0; z += 0.0137) {
        ASSERT_NEAR(F::probit(F::prbnrm(z)), z, 1e-9);
        ASSERT_NEAR(F::CdfNorm(F::IdfNorm(F::prbnrm(z), 3.0, 7.0), 3.0, 7.0), F::prbnrm(z), 2e-15);
    }
    for (double p = 1e-300; p < 0.5; p *= 1.7) {
        ASSERT_LE(RelativeError(F::prbnrm(F::probit(p)), p), 1e-12);
    }
}

TEST(LogGamma, AgreesWithTheCLibrary) {
    for (double x = 1e-300; x < 1e300; x *= x < 1e-3 || x > 1e3 ? 2.9 : 1.003) {
        // Near its zeros at 1 and 2 the function keeps its absolute accuracy only.
        const double scale = std::max(std::fabs(std::lgamma(x)), 0.5);
        ASSERT_LE(std::fabs(F::dnlgam(x) - std::lgamma(x)) / scale, 1e-15) << x;
    }
}

TEST(ChiSquare, QuantilesInvertProbabilities) {
    for (const double df : {0.25, 0.32, 0.4, 1.0, 2.0, 3.5, 10.0, 25.0, 100.0, 1e4, 1e7}) {
        for (const double p : {1e-6, 0.001, 0.1, 0.5, 0.9, 0.999, 1.0 - 1e-9}) {
            const double x = F::IdfChi(p, df);
            ASSERT_LE(RelativeError(F::CdfChi(x, df), p), 1e-5) << p << ' ' << df;
            if (x < 1e-6) continue;  // the first term of the series
            ASSERT_LE(RelativeError(Value(F::idfchb, p, df, 0.6 * x), x), 1e-6) << p << ' ' << df;
        }
    }
}

TEST(BetaFamily, QuantilesInvertProbabilities) {
    for (const double a : {0.3, 0.5, 1.0, 2.0, 7.5, 60.0, 1e4}) {
        for (const double p : {0.001, 0.2, 0.45, 0.8, 0.999}) {
            for (const double b : {0.5, 1.0, 4.0, 200.0}) {
                // The iteration ends at steps below 1e-10.
                const double x = F::betinv(p, a, b);
                ASSERT_LE(Value(F::cdfbet, x - 2e-8, a, b), p) << p << ' ' << a << ' ' << b;
                ASSERT_GE(Value(F::cdfbet, x + 2e-8, a, b), p) << p << ' ' << a << ' ' << b;
            }
            ASSERT_NEAR(F::CdfF(F::IdfF(p, a + 2, 9), a + 2, 9), p, 1e-6) << p << ' ' << a;
            ASSERT_NEAR(F::CdfT(F::IdfT(p, a + 2), a + 2), p, 1e-6) << p << ' ' << a;
        }
    }
}

TEST(Binomial, SumsOfProbabilitiesAndIncompleteBeta) {
    for (const double n : {1.0, 2.0, 7.0, 33.0, 60.0}) {
        for (const double p : {0.01, 0.25, 0.5, 0.9}) {
            double sum = 0.0;
            for (int k = 0; k < static_cast<int>(n); ++k) {
                SCOPED_TRACE(::testing::Message() << k << " of " << n << " by " << p);
                sum += Value(F::PdfBin, k, n, p);
                const double cdf = Value(F::CdfBin, k, n, p);
                ASSERT_LE(RelativeError(cdf, sum), 1e-13);
                ASSERT_LE(RelativeError(cdf, Value(F::cdfbet, 1.0 - p, n - k, k + 1.0)), 1e-12);
                // The quantile is the last count that has not passed the probability.
                const double next = Value(F::CdfBin, k + 1.0, n, p);
                if (next - cdf < 1e-9) continue;
                ASSERT_EQ(Value(F::IdfBin, cdf + 0.5 * (next - cdf), n, p), k);
            }
        }
    }
}

}  // namespace
