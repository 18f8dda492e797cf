#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "accredit/host/MCMV.h"
#include "distfun/Functions.h"

// What holds for every double: a public result is no NaN, a probability is one or missing, a code
// is one of those documented and comes with the missing value. Null, or what is wrong.

inline const char* FaultOf(const Function& f, const std::array<double, 3>& arguments, double value,
                           long code) {
    const bool missing = MCMV::IsMissing(value);
    if ((f.kind & kPublic) != 0 && std::isnan(value)) return "NaN";
    // The logarithms of gamma have no digits to give for arguments beyond this.
    const bool rounded = (f.kind & kRounded) != 0;
    const bool good = !rounded || std::all_of(arguments.begin(), arguments.end(),
                                              [](double a) { return std::fabs(a) <= 1e9; });
    const double slack = rounded ? 1e-6 : 0.0;
    if ((f.kind & kProbability) != 0 && !missing && good &&
        (value < -slack || value > 1.0 + slack)) {
        return "no probability";
    }
    if (code < 0 || code > f.lastCode) return "unknown code";
    if ((f.kind & kCoded) != 0 && !std::isnan(value) && missing != (code != 0)) {
        return "code and value disagree";
    }
    return nullptr;
}

inline const char* PercentileFault(double result, long code) {
    if (std::isnan(result)) return "NaN";
    if (code < -1 || code > 2) return "unknown code";
    if (code != 0 && !MCMV::IsMissing(result)) return "code and value disagree";
    return nullptr;
}
