#include <cmath>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/distfun/internal/Numerics.h"
#include "accredit/host/MCMV.h"

namespace MAMath {

using Numerics::OrMissing;

// Abramowitz and Stegun 26.6.2. Of the two equal forms the one whose argument does not lose the
// digits of x against 1.
double MCDistFun::teskcdff(const double& x, const double& df1, const double& df2, long& code) {
    code = 0;
    if (!(df1 > 0.0 && df2 > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    if (x <= 0.0) return 0.0;
    const double w = df2 / df1;
    const double r = x >= 1.0 ? cdfbet(w / (x + w), df2 / 2.0, df1 / 2.0, code)
                              : cdfbet(x / (w + x), df1 / 2.0, df2 / 2.0, code);
    // Half the smallest double is 0, which is no shape parameter.
    if (code != 0) return r;
    return x >= 1.0 ? 1.0 - r : r;
}

// Abramowitz and Stegun 26.7.1, as the tail or as the centre.
double MCDistFun::teskcdft(const double& x, const double& df, long& code) {
    code = 0;
    if (!(df > 0.0)) {
        code = 1;
        return MCMV::Missing();
    }
    if (x == 0.0) return 0.5;
    if (df == 1.0) return std::atan(x) / 3.141592653589793 + 0.5;
    const double size = std::fabs(x);
    const double w = df / size;
    const bool tail = size > 1.0;
    const double r = tail ? cdfbet(w / (size + w), df / 2.0, 0.5, code)
                          : cdfbet(size / (w + size), 0.5, df / 2.0, code);
    if (code != 0) return r;
    const double half = r * 0.5;
    if (tail) return x > 0.0 ? 1.0 - half : half;
    return x > 0.0 ? 0.5 + half : 0.5 - half;
}

double MCDistFun::CdfF(double x, double df1, double df2) {
    long code = 0;
    const double value = teskcdff(x, df1, df2, code);
    return OrMissing(value, code);
}

double MCDistFun::CdfT(double x, double df) {
    long code = 0;
    const double value = teskcdft(x, df, code);
    return OrMissing(value, code);
}

}  // namespace MAMath
