#pragma once

#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCStatus.h"

/// @file
/// The results of the single variables, and the accreditation from them.

/// The result of one variable of a reference against a new summary.
struct ACCREDIT_EXPORT MAVariableResult {
    /// The slot of the variable in the new summary, -1 if it has no partner there.
    int newSlot = -1;
    /// The p-value, from 0 to 1; -1 if the test failed or, with an OK status, could not be carried
    /// out because the frequencies cannot be compared.
    double pValue = -1.0;
    /// The chi-square statistic that the p-value was made of, 0 or more. -1 where the test came to
    /// its p-value, or to none, without it: on a failure, for a constant sample, for a reference
    /// with a single category, and for new cases where the reference has none.
    double statistic = -1.0;
    /// The degrees of freedom of the statistic, the number of the reference's cells less 1; -1
    /// without a statistic.
    double degreesOfFreedom = -1.0;
    /// OK, the failure of matching (with the position in the reference list as datum 0), or the
    /// failure of the test; see MAAccreditor::ComputeAccreditation.
    MCCommon::MCStatus status;
};

/// Tests every input variable of the reference, by the tests that
/// MAAccreditor::ComputeAccreditation runs and without stopping at a failure. One entry for each
/// slot of the reference, in slot order; none if the reference is empty. Against an empty new
/// summary every status is MAStatusNoDistStats. Takes time linear in the two lists; both summaries
/// are only read.
ACCREDIT_EXPORT std::vector<MAVariableResult> MATestVariables(const MADistStats& refStats,
                                                              const MADistStats& newStats);

/// The accreditation from the results that MATestVariables gave: what
/// MAAccreditor::ComputeAccreditation makes of the same summaries and weights, status included.
/// `weights` is empty or has one entry for each result. `accreditation` becomes the weighted mean
/// of the p-values; -1 on a failure and for weights that sum to 0. Without results the status is
/// MAStatusNoDistStats.
ACCREDIT_EXPORT MCCommon::MCStatus MAAccreditation(const std::vector<MAVariableResult>& results,
                                                   const std::vector<double>& weights,
                                                   double& accreditation);

/// The same of two summaries, without an accreditor and its record source: matches their variables,
/// checks the weights and tests the variables, up to the first failure. This is what
/// MAAccreditor::ComputeAccreditation does with its own summary.
ACCREDIT_EXPORT MCCommon::MCStatus MAAccreditation(const MADistStats& refStats,
                                                   const MADistStats& newStats,
                                                   const std::vector<double>& weights,
                                                   double& accreditation);
