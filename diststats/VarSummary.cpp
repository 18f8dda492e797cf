#include "accredit/diststats/VarSummary.h"

#include <cmath>

void VarSummary::AddValue(double value) {
    if (MCMV::IsMissing(value)) return;
    ++count;
    const auto n = static_cast<double>(count);
    if (MCMV::IsMissing(min) || min > value) min = value;
    if (MCMV::IsMissing(max) || max < value) max = value;
    const double d = value - mean;
    mean += d / n;
    stdDev += ((n - 1.0) / n) * (d * d);
}

void VarSummary::Finish() {
    if (MCMV::IsMissing(min)) {
        mean = MCMV::Missing();
        stdDev = MCMV::Missing();
    } else if (count <= 1) {
        stdDev = MCMV::Missing();
    } else if (max == min) {
        stdDev = 0.0;
    } else {
        stdDev = std::sqrt(stdDev / static_cast<double>(count - 1));
    }
}
