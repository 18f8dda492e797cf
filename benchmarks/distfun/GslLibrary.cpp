#include <gsl/gsl_cdf.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_sf_gamma.h>

#include <limits>

#include "Libraries.h"

namespace DistFun {

namespace {

// Its counts have 32 bits.
template <class Call>
double WithCounts(const Arguments& a, Call call) {
    if (a[1] >= 4294967296.0) return std::numeric_limits<double>::quiet_NaN();
    return call(static_cast<unsigned>(a[0]), a[2], static_cast<unsigned>(a[1]));
}

}  // namespace

const std::vector<Implementation>& Gsl() {
    using A = const Arguments&;
    // The handler that is there at the start ends the process.
    gsl_set_error_handler_off();
    static const std::vector<Implementation> list = {
        {"GSL", "CdfStdNorm", [](A a) { return gsl_cdf_ugaussian_P(a[0]); }},
        {"GSL", "CdfNorm", [](A a) { return gsl_cdf_gaussian_P(a[0] - a[1], a[2]); }},
        {"GSL", "IdfStdNorm", [](A a) { return gsl_cdf_ugaussian_Pinv(a[0]); }},
        {"GSL", "IdfNorm", [](A a) { return a[1] + gsl_cdf_gaussian_Pinv(a[0], a[2]); }},
        {"GSL", "CdfChi", [](A a) { return gsl_cdf_chisq_P(a[0], a[1]); }},
        {"GSL", "IdfChi", [](A a) { return gsl_cdf_chisq_Pinv(a[0], a[1]); }},
        {"GSL", "CdfF", [](A a) { return gsl_cdf_fdist_P(a[0], a[1], a[2]); }},
        {"GSL", "CdfT", [](A a) { return gsl_cdf_tdist_P(a[0], a[1]); }},
        {"GSL", "IdfF", [](A a) { return gsl_cdf_fdist_Pinv(a[0], a[1], a[2]); }},
        {"GSL", "IdfT", [](A a) { return gsl_cdf_tdist_Pinv(a[0], a[1]); }},
        {"GSL", "CdfBin", [](A a) { return WithCounts(a, gsl_cdf_binomial_P); }},
        {"GSL", "PdfBin", [](A a) { return WithCounts(a, gsl_ran_binomial_pdf); }},
        {"GSL", "teskdnlgam", [](A a) { return gsl_sf_lngamma(a[0]); }},
    };
    return list;
}

}  // namespace DistFun
