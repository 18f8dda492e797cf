#pragma once

#include <vector>

#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/diststats/MADistStats.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/MCStatus.h"

namespace MADetail {

/// The chi-square goodness of fit of the observed frequencies O to the reference frequencies R,
/// which, rescaled to the observed total, are the expected ones (Pearson's test). The degrees of
/// freedom are the number of entries minus 1.
///
/// Gives the p-value, exactly 1 for proportional frequencies; exactly 0 if an entry was observed
/// whose reference frequency is 0; -1 if the fit cannot be carried out: fewer than 2 entries,
/// unequal lengths, a negative entry, a sum that is not above 0, or numbers so far apart that the
/// statistic is not a number. Statistic and degrees of freedom of `result` are set where the
/// p-value is made of them.
double ChiSquareFit(const std::vector<double>& R, const std::vector<double>& O,
                    MAVariableResult& result);

/// The code in `newEncoder` of the category that has `code` in `refEncoder`, -1 if there is none.
/// Numbers are compared as numbers, by the reference's kind of values.
int MapCategory(const MCMTD_NAMESPACE::IMCEncoder& refEncoder,
                const MCMTD_NAMESPACE::IMCEncoder& newEncoder, int code);

/// Tests the categorical variable with slot `i` in the reference against that with slot `j` in the
/// new summary. The p-value of `result`, whose statistic is still -1, becomes that of the test, or
/// -1 on a failure and where ChiSquareFit gives it. Fails with MAStatusNoCases or
/// MAStatusCategoriesDiffer.
MCCommon::MCStatus TestCategoricalVariable(unsigned int i, int j, const MADistStats& refStats,
                                           const MADistStats& newStats, MAVariableResult& result);

/// The same for a continuous variable: by the bins if both samples vary, else by the means. Fails
/// with MAStatusTooFewCases.
MCCommon::MCStatus TestContinuousVariable(unsigned int i, int j, const MADistStats& refStats,
                                          const MADistStats& newStats, MAVariableResult& result);

/// The test that suits the variable's kind in the reference.
MCCommon::MCStatus TestVariable(unsigned int i, int j, const MADistStats& refStats,
                                const MADistStats& newStats, MAVariableResult& result);

}  // namespace MADetail
