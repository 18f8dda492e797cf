// The distribution functions on questions that they answer every day.

#include <iostream>
#include <vector>

#include "accredit/distfun/MCDistFun.h"
#include "accredit/host/MCMV.h"

using MAMath::MCDistFun;

int main() {
    std::cout << "95% quantiles: z " << MCDistFun::IdfStdNorm(0.95) << ", t with 10 df "
              << MCDistFun::IdfT(0.95, 10) << ", chi-square with 10 df "
              << MCDistFun::IdfChi(0.95, 10) << ", F with 4 and 10 df "
              << MCDistFun::IdfF(0.95, 4, 10) << '\n';

    // Two-sided p-value of a t statistic of 2.4 with 28 degrees of freedom.
    std::cout << "p of t = 2.4: " << 2.0 * MCDistFun::CdfT(-2.4, 28) << '\n';

    // The chance of at most 3 defective parts in 200, if 3% are defective on average.
    long code = 0;
    const double atMostThree = MCDistFun::CdfBin(3, 200, 0.03, code);
    if (code == 0) std::cout << "at most 3 of 200: " << atMostThree << '\n';

    // A function that cannot give a value says so by the missing value, never by a NaN.
    if (MCMV::IsMissing(MCDistFun::IdfStdNorm(1.0))) std::cout << "no quantile at p = 1\n";

    // Waiting times in minutes, and how many customers waited so long.
    const std::vector<double> minutes = {1, 2, 3, 4, 5, 7, 10, 15};
    const std::vector<double> customers = {4, 9, 12, 8, 6, 5, 3, 1};
    double percentile = 0.0;
    MCDistFun::GPTile(8, 90, minutes, customers, {}, 0, percentile, code);
    double lower = 0.0;
    double upper = 0.0;
    double level = 0.0;
    MCDistFun::Mednci(8, minutes, customers, 48, 95, true, lower, upper, level);
    std::cout << "90% wait at most " << percentile << " minutes; the median lies between " << lower
              << " and " << upper << " minutes (" << level << "%)\n";
    return 0;
}
