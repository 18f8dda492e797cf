#include "accredit/accreditation/MAVariableResult.h"

#include "accredit/accreditation/internal/VariableMatching.h"
#include "accredit/accreditation/internal/VariableTests.h"

using MCCommon::MCStatus;

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
            result.status =
                MADetail::TestVariable(slot, match.ordinal, refStats, newStats, result.pValue);
        }
        results.push_back(result);
        ++slot;
    }
    return results;
}
