#pragma once

#include <cstddef>
#include <vector>

#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/host/MCStatus.h"

namespace MADetail {

/// Whether weights fit so many variables: none at all, or one for each, none below 0. Fails with
/// MAStatusBadWeights.
MCCommon::MCStatus CheckWeights(const std::vector<double>& weights, std::size_t variables);

/// The mean of the p-values, each -1 included; the weights fit the results. -1 if they sum to 0.
double WeightedMean(const std::vector<MAVariableResult>& results,
                    const std::vector<double>& weights);

}  // namespace MADetail
