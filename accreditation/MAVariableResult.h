#pragma once

#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCStatus.h"

/// @file
/// The results of the single variables.

/// The result of one variable of a reference against a new summary.
struct ACCREDIT_EXPORT MAVariableResult {
    /// The slot of the variable in the new summary, -1 if it has no partner there.
    int newSlot = -1;
    /// The p-value, from 0 to 1; -1 if the test failed or, with an OK status, could not be carried
    /// out because the frequencies cannot be compared.
    double pValue = -1.0;
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
