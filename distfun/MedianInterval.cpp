#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

namespace {

using Vector = std::vector<double>;

// The first value, going up, with at least `rank` cases up to and with it.
double ValueFromBelow(double rank, std::size_t n, const Vector& x, const Vector& w) {
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        sum += w[i];
        if (sum >= rank) return x[i];
    }
    return MCMV::Missing();
}

// The first value, going down, with less than `rank` of the N cases below it.
double ValueFromAbove(double rank, double N, std::size_t n, const Vector& x, const Vector& w) {
    double c = N;
    for (std::size_t i = n; i > 0; --i) {
        c -= w[i - 1];
        if (c < rank) return x[i - 1];
    }
    return MCMV::Missing();
}

}  // namespace

void MCDistFun::Mednci(long n, const std::vector<double>& values,
                       const std::vector<double>& weights, double N, double level, bool wantLevel,
                       double& lower, double& upper, double& actual) {
    lower = MCMV::Missing();
    upper = MCMV::Missing();
    actual = MCMV::Missing();
    if (n < 1) return;
    const std::size_t count =
        std::min({static_cast<std::size_t>(n), values.size(), weights.size()});
    if (count < 1 || !(N >= 2.0)) return;
    const double first = Numerics::OrMissing(values[0]);
    const double last = Numerics::OrMissing(values[count - 1]);

    // The number of cases left out at each end, -1 if the sample is too small for the level.
    double m = -1.0;
    if (N != 2.0) {
        long code = 0;
        m = IdfBin(0.5 - level / 200.0, N, 0.5, code);
        if (code != 0) return;
    }
    if (m < 0.0) {
        lower = first;
        upper = last;
        actual = 100.0;
        return;
    }

    double r = m + 1.0;
    if (N <= r) {
        r = N;
        lower = last;
    } else {
        lower = Numerics::OrMissing(ValueFromBelow(r, count, values, weights));
    }
    double s = N - m;
    if (s <= 1.0) {
        s = 1.0;
        upper = first;
    } else {
        upper = Numerics::OrMissing(ValueFromAbove(s, N, count, values, weights));
    }
    if (!wantLevel) return;
    long code = 0;
    const double v = cdfbet(0.5, r, s, code);
    if (code != 0 || std::isnan(v)) return;
    actual = std::max((v - 0.5) * 200.0, 0.0);
}

}  // namespace MAMath
