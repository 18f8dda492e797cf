#pragma once

#include <vector>

#include "accredit/diststats/MADistStatsImp.h"

namespace MADetail {

/// The members of a summary, for what makes one without reading records from a source.
struct SummaryMembers {
    static std::vector<VarSummary>& Summaries(MADistStatsImp& stats) { return stats.mSummaries; }
    static std::vector<std::vector<double>>& Frequencies(MADistStatsImp& stats) {
        return stats.mFrequencies;
    }
    static std::vector<std::vector<double>>& CutPoints(MADistStatsImp& stats) {
        return stats.mCutPoints;
    }
};

}  // namespace MADetail
