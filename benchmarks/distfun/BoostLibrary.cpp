#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include "Libraries.h"

namespace DistFun {

namespace {

using namespace boost::math::policies;

// As it comes, but for exceptions: a failure is a NaN or an infinity. As it comes the quantile of a
// discrete distribution is rounded outwards; `integer_round_up` asks for the smallest k with
// P(X <= k) >= p, as elsewhere.
using Quiet = policy<domain_error<ignore_error>, pole_error<ignore_error>,
                     overflow_error<ignore_error>, evaluation_error<ignore_error>,
                     rounding_error<ignore_error>, discrete_quantile<integer_round_up>>;

using Normal = boost::math::normal_distribution<double, Quiet>;
using ChiSquare = boost::math::chi_squared_distribution<double, Quiet>;
using F = boost::math::fisher_f_distribution<double, Quiet>;
using T = boost::math::students_t_distribution<double, Quiet>;
using Binomial = boost::math::binomial_distribution<double, Quiet>;

}  // namespace

const std::vector<Implementation>& BoostMath() {
    using A = const Arguments&;
    static const std::vector<Implementation> list = {
        {"Boost", "CdfStdNorm", [](A a) { return cdf(Normal(), a[0]); }},
        {"Boost", "CdfNorm", [](A a) { return cdf(Normal(a[1], a[2]), a[0]); }},
        {"Boost", "IdfStdNorm", [](A a) { return quantile(Normal(), a[0]); }},
        {"Boost", "IdfNorm", [](A a) { return quantile(Normal(a[1], a[2]), a[0]); }},
        {"Boost", "CdfChi", [](A a) { return cdf(ChiSquare(a[1]), a[0]); }},
        {"Boost", "IdfChi", [](A a) { return quantile(ChiSquare(a[1]), a[0]); }},
        {"Boost", "CdfF", [](A a) { return cdf(F(a[1], a[2]), a[0]); }},
        {"Boost", "CdfT", [](A a) { return cdf(T(a[1]), a[0]); }},
        {"Boost", "IdfF", [](A a) { return quantile(F(a[1], a[2]), a[0]); }},
        {"Boost", "IdfT", [](A a) { return quantile(T(a[1]), a[0]); }},
        {"Boost", "CdfBin", [](A a) { return cdf(Binomial(a[1], a[2]), a[0]); }},
        {"Boost", "PdfBin", [](A a) { return pdf(Binomial(a[1], a[2]), a[0]); }},
        // The smallest k with P(X <= k) >= prob lies one above the largest with P(X <= k) <= prob,
        // but where the two are equal.
        {"Boost", "IdfBin", [](A a) { return quantile(Binomial(a[1], a[2]), a[0]) - 1.0; }},
        {"Boost", "teskdnlgam", [](A a) { return boost::math::lgamma(a[0], Quiet()); }},
    };
    return list;
}

}  // namespace DistFun
