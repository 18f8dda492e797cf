#pragma once

#include <vector>

#include "accredit/host/MCStatus.h"
#include "accredit/host/MCVarList.h"

namespace MADetail {

/// What matching found for one input variable of the first list.
struct VariableMatch {
    int ordinal = -1;  ///< Rank of the partner among the second list's input variables, or -1.
    MCCommon::MCStatus status;  ///< Why there is no partner, with the position as datum 0.
};

/// One entry for each input variable of `first`, in its order.
std::vector<VariableMatch> MatchEachVariable(const MCMTD_NAMESPACE::MCVarList& first,
                                             const MCMTD_NAMESPACE::MCVarList& second);

/// See MAAccreditor::MatchVariables.
MCCommon::MCStatus MatchVariables(const MCMTD_NAMESPACE::MCVarList& first,
                                  const MCMTD_NAMESPACE::MCVarList& second,
                                  std::vector<int>& matches);

}  // namespace MADetail
