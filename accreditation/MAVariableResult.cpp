#include "accredit/accreditation/MAVariableResult.h"

#include <algorithm>
#include <cstddef>

#include "accredit/accreditation/internal/VariableMatching.h"
#include "accredit/accreditation/internal/VariableTests.h"
#include "accredit/accreditation/internal/WeightedMean.h"

using MCCommon::MCStatus;
using MCMTD_NAMESPACE::MCVarList;

std::vector<MAVariableResult> MATestVariables(const MADistStats& refStats,
                                              const MADistStats& newStats) {
    std::vector<MAVariableResult> results;
    const bool nothingNew = newStats.GetVarList().Size() == 0;
    unsigned int slot = 0;
    for (const MADetail::VariableMatch& match :
         MADetail::MatchEachVariable(refStats.GetVarList(), newStats.GetVarList())) {
        MAVariableResult result;
        result.newSlot = match.ordinal;
        result.status = nothingNew ? MCStatus(MAStatusNoDistStats, false) : match.status;
        if (result.status.IsOK()) {
            result.status = MADetail::TestVariable(slot, match.ordinal, refStats, newStats, result);
        }
        results.push_back(result);
        ++slot;
    }
    return results;
}

MCStatus MAAccreditation(const std::vector<MAVariableResult>& results,
                         const std::vector<double>& weights, double& accreditation) {
    accreditation = -1.0;
    if (results.empty()) return {MAStatusNoDistStats, false};
    // What keeps a variable from being tested comes before the weights, and those before the tests.
    for (const MAVariableResult& result : results) {
        if (result.newSlot < 0 && !result.status.IsOK()) return result.status;
    }
    const MCStatus checked = MADetail::CheckWeights(weights, results.size());
    if (!checked.IsOK()) return checked;
    for (const MAVariableResult& result : results) {
        if (!result.status.IsOK()) return result.status;
    }
    accreditation = MADetail::WeightedMean(results, weights);
    return {};
}

MCStatus MAAccreditation(const MADistStats& refStats, const MADistStats& newStats,
                         const std::vector<double>& weights, double& accreditation) {
    accreditation = -1.0;
    const MCVarList& refList = refStats.GetVarList();
    const MCVarList& newList = newStats.GetVarList();
    if (refList.Size() == 0 || newList.Size() == 0) return {MAStatusNoDistStats, false};

    std::vector<int> matches;
    MCStatus status = MADetail::MatchVariables(refList, newList, matches);
    if (status.IsOK()) status = MADetail::CheckWeights(weights, matches.size());
    if (!status.IsOK()) return status;

    std::vector<MAVariableResult> results(matches.size());
    for (std::size_t i = 0; i < matches.size(); ++i) {
        status = MADetail::TestVariable(static_cast<unsigned int>(i), matches[i], refStats,
                                        newStats, results[i]);
        if (!status.IsOK()) return status;
    }
    accreditation = MADetail::WeightedMean(results, weights);
    return status;
}

namespace MADetail {

MCStatus CheckWeights(const std::vector<double>& weights, std::size_t variables) {
    if (weights.empty()) return {};
    const bool negative =
        std::any_of(weights.begin(), weights.end(), [](double weight) { return weight < 0.0; });
    if (weights.size() != variables || negative) return {MAStatusBadWeights, false};
    return {};
}

double WeightedMean(const std::vector<MAVariableResult>& results,
                    const std::vector<double>& weights) {
    double sum = 0.0;
    double sumW = 0.0;
    for (std::size_t i = 0; i < results.size(); ++i) {
        const double p = results[i].pValue;
        sum += weights.empty() ? p : weights[i] * p;
        if (!weights.empty()) sumW += weights[i];
    }
    if (weights.empty()) return sum / static_cast<double>(results.size());
    return sumW > 0.0 ? sum / sumW : -1.0;
}

}  // namespace MADetail
