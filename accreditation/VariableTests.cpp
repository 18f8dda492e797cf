#include "accredit/accreditation/internal/VariableTests.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "accredit/distfun/MCDistFun.h"

using MAMath::MCDistFun;
using MCCommon::MCStatus;
using MCMTD_NAMESPACE::IMCEncoder;

namespace MADetail {

namespace {

// An encoder answers with a code as a double. What is negative, or what no int holds, counts as
// unknown.
int ToCode(double encoded) {
    return encoded > -1.0 && encoded < 2147483648.0 ? static_cast<int>(encoded) : -1;
}

const IMCEncoder& EncoderOf(const MADistStats& stats, unsigned int slot) {
    return *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
}

// The new frequencies in the reference's category order. Categories that the new encoder does not
// know count 0, and so do those beyond the end of `newFreq`, which a data pass extends only up to
// the highest code it met. None at all if the reference does not have a frequency for each of its
// categories, since nothing fits then. False if a new category has no partner in the reference.
bool AlignFrequencies(const IMCEncoder& refEncoder, const IMCEncoder& newEncoder,
                      const std::vector<double>& refFreq, const std::vector<double>& newFreq,
                      std::vector<double>& aligned) {
    const int cr = std::max(refEncoder.GetNumCategories(), 0);
    const int cn = std::max(newEncoder.GetNumCategories(), 0);
    // Each category of the reference finds one new category at most.
    if (cn > cr) return false;
    const bool whole = refFreq.size() == static_cast<std::size_t>(cr);
    aligned.assign(whole ? refFreq.size() : 0, 0.0);
    std::vector<std::int16_t> seen(static_cast<std::size_t>(cn), 0);
    for (int c = 0; c < cr; ++c) {
        const int code = MapCategory(refEncoder, newEncoder, c);
        if (code < 0 || code >= cn) continue;
        const auto k = static_cast<std::size_t>(code);
        if (whole && k < newFreq.size()) aligned[static_cast<std::size_t>(c)] = newFreq[k];
        seen[k] = 1;
    }
    return std::find(seen.begin(), seen.end(), std::int16_t{0}) == seen.end();
}

}  // namespace

double ChiSquareFit(const std::vector<double>& R, const std::vector<double>& O,
                    MAVariableResult& result) {
    const std::size_t m = R.size();
    if (m < 2 || O.size() != m) return -1.0;

    double sumR = 0.0;
    double sumO = 0.0;
    for (std::size_t b = 0; b < m; ++b) {
        if (R[b] < 0.0 || O[b] < 0.0) return -1.0;
        sumR += R[b];
        sumO += O[b];
    }
    if (!(sumR > 0.0) || !(sumO > 0.0)) return -1.0;

    const double scale = sumO / sumR;
    double statistic = 0.0;
    for (std::size_t b = 0; b < m; ++b) {
        if (R[b] == 0.0) {
            if (O[b] == 0.0) continue;
            return 0.0;
        }
        const double e = R[b] * scale;
        const double difference = O[b] - e;
        statistic += difference * difference / e;
    }
    if (std::isnan(statistic)) return -1.0;
    result.statistic = statistic;
    result.degreesOfFreedom = static_cast<double>(m - 1);
    return 1.0 - MCDistFun::CdfChi(statistic, result.degreesOfFreedom);
}

int MapCategory(const IMCEncoder& refEncoder, const IMCEncoder& newEncoder, int code) {
    if (refEncoder.GetValueType() == IMCEncoder::ValueTypeNumber) {
        return ToCode(newEncoder.EncodeNumber(refEncoder.DecodeNumber(code)));
    }
    return ToCode(newEncoder.EncodeString(refEncoder.DecodeString(code)));
}

MCStatus TestCategoricalVariable(unsigned int i, int j, const MADistStats& refStats,
                                 const MADistStats& newStats, MAVariableResult& result) {
    result.pValue = -1.0;
    const auto newSlot = static_cast<unsigned int>(j);
    if (refStats.GetNumberOfCases(i) == 0 || newStats.GetNumberOfCases(newSlot) == 0) {
        return {MAStatusNoCases, false};
    }
    const IMCEncoder& refEncoder = EncoderOf(refStats, i);
    const IMCEncoder& newEncoder = EncoderOf(newStats, newSlot);
    const std::vector<double>& refFreq = refStats.GetFrequencies(i);
    const std::vector<double>& newFreq = newStats.GetFrequencies(newSlot);

    if (refFreq.size() < newFreq.size()) return {MAStatusCategoriesDiffer, false};
    if (refFreq.size() == 1) {
        if (MapCategory(refEncoder, newEncoder, 0) == -1) return {MAStatusCategoriesDiffer, false};
        result.pValue = 1.0;
        return {};
    }
    std::vector<double> aligned;
    if (!AlignFrequencies(refEncoder, newEncoder, refFreq, newFreq, aligned)) {
        return {MAStatusCategoriesDiffer, false};
    }
    result.pValue = ChiSquareFit(refFreq, aligned, result);
    return {};
}

MCStatus TestContinuousVariable(unsigned int i, int j, const MADistStats& refStats,
                                const MADistStats& newStats, MAVariableResult& result) {
    result.pValue = -1.0;
    const auto newSlot = static_cast<unsigned int>(j);
    if (refStats.GetNumberOfCases(i) < 2 || newStats.GetNumberOfCases(newSlot) < 2) {
        return {MAStatusTooFewCases, false};
    }
    double refMean = MCMV::Missing();
    double refStdDev = MCMV::Missing();
    double newMean = MCMV::Missing();
    double newStdDev = MCMV::Missing();
    refStats.GetMeanStdDev(i, refMean, refStdDev);
    newStats.GetMeanStdDev(newSlot, newMean, newStdDev);

    if (refStdDev > 0.0 && newStdDev > 0.0) {
        result.pValue =
            ChiSquareFit(refStats.GetFrequencies(i), newStats.GetFrequencies(newSlot), result);
    } else {
        result.pValue = refStdDev == 0.0 && newStdDev == 0.0 && refMean == newMean ? 1.0 : 0.0;
    }
    return {};
}

MCStatus TestVariable(unsigned int i, int j, const MADistStats& refStats,
                      const MADistStats& newStats, MAVariableResult& result) {
    return refStats.IsCategorical(i) ? TestCategoricalVariable(i, j, refStats, newStats, result)
                                     : TestContinuousVariable(i, j, refStats, newStats, result);
}

}  // namespace MADetail
