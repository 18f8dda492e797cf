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

// T is the place looked for on the scale of the cumulative weights. Each form below keeps in p the
// place where a class begins and in c (or m) the one where it ends.

double Interpolate(double T, double c0, double c1, double lo, double hi) {
    const double d = c1 - c0;
    if (d == 0.0) return MCMV::Missing();
    const double f = (T - c0) / d;
    return f == 0.0 ? lo : f * hi + (1.0 - f) * lo;
}

double Points(double T, std::size_t n, const Vector& x, const Vector& w, long& code) {
    double p = 0.0;
    double c = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double m = c + w[i] / 2.0;
        c += w[i];
        if (i == 0 && T < m) {
            code = 1;
            return MCMV::Missing();
        }
        if (i == n - 1 && T > m) {
            code = 2;
            return MCMV::Missing();
        }
        if (p <= T && T < m) return Interpolate(T, p, m, x[i - 1], x[i]);
        if (T == p && T == m) return MCMV::Missing();
        p = m;
    }
    return T == p ? x[n - 1] : MCMV::Missing();
}

double ClassesOfOneWidth(double T, std::size_t n, const Vector& x, const Vector& w, double b) {
    double p = 0.0;
    double c = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        c += w[i];
        if (T == p && T == c) return c == 0.0 ? MCMV::Missing() : x[i - 1] + b / 2.0;
        if (p <= T && T < c) return Interpolate(T, p, c, x[i] - b / 2.0, x[i] + b / 2.0);
        p = c;
    }
    return T == p ? x[n - 1] + b / 2.0 : MCMV::Missing();
}

double ClassesByLimits(double T, std::size_t n, const Vector& x, const Vector& w, const Vector& b,
                       std::size_t k) {
    double p = 0.0;
    double q = 0.0;
    double c = 0.0;
    double up = 0.0;
    std::size_t next = 0;  // the first value that is not yet in c
    for (std::size_t j = 0; j < k; ++j) {
        const double lo = b[j];
        const double last = up;
        if (j + 1 < k) {
            up = b[j + 1];
        } else {
            const auto end = x.begin() + static_cast<std::ptrdiff_t>(n);
            const auto above = std::find_if(x.begin(), end, [lo](double v) { return v > lo; });
            if (above == end) break;
            up = (*above - lo) + *above;
        }
        // Ascending limits let the sum go on where it stands.
        if (!(up >= last)) {
            next = 0;
            c = 0.0;
        }
        for (; next < n && !(x[next] >= up); ++next) c += w[next];
        if (c == 0.0 && T == 0.0) return b[0];
        if (T == p && T == c) return c == q ? MCMV::Missing() : lo;
        if (p <= T && T <= c) return Interpolate(T, p, c, lo, up);
        q = p;
        p = c;
    }
    return MCMV::Missing();
}

}  // namespace

void MCDistFun::GPTile(long n, double percent, const std::vector<double>& values,
                       const std::vector<double>& weights, const std::vector<double>& limits,
                       long k, double& result, long& code) {
    result = MCMV::Missing();
    code = -1;
    if (n <= 1) return;
    const std::size_t count =
        std::min({static_cast<std::size_t>(n), values.size(), weights.size()});
    if (count <= 1) return;

    code = 0;
    double total = 0.0;
    for (std::size_t i = 0; i < count; ++i) total += weights[i];
    const double T = total * percent / 100.0;
    if (k < 1) {
        result = Points(T, count, values, weights, code);
    } else if (k > 1) {
        result = ClassesByLimits(T, count, values, weights, limits,
                                 std::min(static_cast<std::size_t>(k), limits.size()));
    } else if (!limits.empty()) {
        result = ClassesOfOneWidth(T, count, values, weights, limits[0]);
    }
    result = Numerics::OrMissing(result);
}

}  // namespace MAMath
