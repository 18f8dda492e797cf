#include "accredit/accreditation/MAAccreditor.h"

#include "accredit/accreditation/internal/MAAccreditorImp.h"
#include "accredit/accreditation/internal/VariableMatching.h"

using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCMTD_NAMESPACE::MCVarList;

MAAccreditor::MAAccreditor(const MCVarList& varList, MultiPassRecordIter& iter,
                           MCQueryCancel* queryCancel)
    : mImp(std::make_unique<MAAccreditorImp>(varList, iter, queryCancel)) {}

MAAccreditor::~MAAccreditor() = default;

MCStatus MAAccreditor::ComputeDistStats(const std::vector<std::vector<double>>& cutPoints) {
    return mImp->ComputeDistStats(cutPoints);
}

const MADistStats& MAAccreditor::GetDistStats() const { return mImp->GetDistStats(); }

MCStatus MAAccreditor::ComputeAccreditation(const MADistStats& refStats,
                                            const std::vector<double>& weights) {
    return mImp->ComputeAccreditation(refStats, weights);
}

double MAAccreditor::GetAccreditation() const { return mImp->GetAccreditation(); }

MCStatus MAAccreditor::MatchVariables(const MCVarList& first, const MCVarList& second,
                                      std::vector<int>& matches) {
    return MADetail::MatchVariables(first, second, matches);
}
