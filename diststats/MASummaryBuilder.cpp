#include "accredit/diststats/MASummaryBuilder.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "accredit/diststats/MAProblems.h"
#include "accredit/diststats/internal/Accumulators.h"
#include "accredit/diststats/internal/SummaryMembers.h"

using MADetail::Accumulators;
using MADetail::SummaryMembers;
using MCCommon::MCStatus;
using MCMTD_NAMESPACE::MCVarList;

struct MASummaryBuilder::State {
    State(const MCVarList& varList, const std::vector<std::vector<double>>& cutPoints)
        : summary(varList, nullptr), size(varList.Size()) {
        for (unsigned int slot = 0; slot < summary.GetVarCount(); ++slot) {
            positions.push_back(summary.GetVarListIndex(slot));
            categorical.push_back(summary.IsCategorical(slot) ? 1 : 0);
        }
        if (cutPoints.size() != positions.size() ||
            MAFindBadCutPoints(varList, cutPoints) != MACutPointsAreGood) {
            throw MCStatus(MAStatusBadCutPoints, false);
        }
        SummaryMembers::CutPoints(summary) = cutPoints;
        for (std::size_t slot = 0; slot < cutPoints.size(); ++slot) {
            if (categorical[slot] != 0 || cutPoints[slot].empty()) continue;
            SummaryMembers::Frequencies(summary)[slot].resize(cutPoints[slot].size() + 1);
        }
        Begin();
    }

    void Begin() {
        accumulators = std::make_unique<Accumulators>(positions, categorical,
                                                      SummaryMembers::CutPoints(summary),
                                                      MADetail::Gathered::SummariesAndBins);
        count = 0;
    }

    MADistStatsImp summary;  // with the list and the cut points, but without any case
    std::size_t size;        // of a record
    std::vector<int> positions;
    std::vector<std::int16_t> categorical;
    std::unique_ptr<Accumulators> accumulators;
    unsigned long count = 0;
};

MASummaryBuilder::MASummaryBuilder(const MCVarList& varList,
                                   const std::vector<std::vector<double>>& cutPoints)
    : mState(std::make_unique<State>(varList, cutPoints)) {}

MASummaryBuilder::MASummaryBuilder(MASummaryBuilder&& other) noexcept = default;
MASummaryBuilder& MASummaryBuilder::operator=(MASummaryBuilder&& other) noexcept = default;
MASummaryBuilder::~MASummaryBuilder() = default;

MCStatus MASummaryBuilder::Add(const std::vector<double>& values) {
    return Add(values.data(), values.size());
}

MCStatus MASummaryBuilder::Add(const double* values, std::size_t size) {
    if (size != mState->size) return {MAStatusRecordSize, false};
    Accumulators& accumulators = *mState->accumulators;
    accumulators.Reserve(values);
    accumulators.Add(values);
    ++mState->count;
    return {};
}

unsigned long MASummaryBuilder::GetRecordCount() const { return mState->count; }

MADistStats MASummaryBuilder::GetDistStats() const {
    auto made = std::make_unique<MADistStatsImp>(mState->summary);
    std::vector<VarSummary>& summaries = SummaryMembers::Summaries(*made);
    std::vector<std::vector<double>>& frequencies = SummaryMembers::Frequencies(*made);
    mState->accumulators->Finish();
    mState->accumulators->StoreSummaries(summaries, frequencies);
    mState->accumulators->StoreBins(frequencies);
    for (VarSummary& summary : summaries) summary.Finish();
    return {made.release()};
}

void MASummaryBuilder::Clear() { mState->Begin(); }
