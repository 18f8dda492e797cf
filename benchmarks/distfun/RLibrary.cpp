#include "Libraries.h"

// The standalone form of the library; last, as it defines macros with everyday names.
#define MATHLIB_STANDALONE
#include <Rmath.h>

namespace DistFun {

// The last two arguments ask for the lower tail and for a probability, not its logarithm.
const std::vector<Implementation>& R() {
    using A = const Arguments&;
    static const std::vector<Implementation> list = {
        {"R", "CdfStdNorm", [](A a) { return pnorm(a[0], 0.0, 1.0, 1, 0); }},
        {"R", "CdfNorm", [](A a) { return pnorm(a[0], a[1], a[2], 1, 0); }},
        {"R", "IdfStdNorm", [](A a) { return qnorm(a[0], 0.0, 1.0, 1, 0); }},
        {"R", "IdfNorm", [](A a) { return qnorm(a[0], a[1], a[2], 1, 0); }},
        {"R", "CdfChi", [](A a) { return pchisq(a[0], a[1], 1, 0); }},
        {"R", "IdfChi", [](A a) { return qchisq(a[0], a[1], 1, 0); }},
        {"R", "CdfF", [](A a) { return pf(a[0], a[1], a[2], 1, 0); }},
        {"R", "CdfT", [](A a) { return pt(a[0], a[1], 1, 0); }},
        {"R", "IdfF", [](A a) { return qf(a[0], a[1], a[2], 1, 0); }},
        {"R", "IdfT", [](A a) { return qt(a[0], a[1], 1, 0); }},
        {"R", "CdfBin", [](A a) { return pbinom(a[0], a[1], a[2], 1, 0); }},
        {"R", "PdfBin", [](A a) { return dbinom(a[0], a[1], a[2], 0); }},
        // The smallest k with P(X <= k) >= prob lies one above the largest with P(X <= k) <= prob,
        // but where the two are equal.
        {"R", "IdfBin", [](A a) { return qbinom(a[0], a[1], a[2], 1, 0) - 1.0; }},
        {"R", "teskdnlgam", [](A a) { return lgammafn(a[0]); }},
    };
    return list;
}

}  // namespace DistFun
