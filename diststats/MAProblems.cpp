#include "accredit/diststats/MAProblems.h"

#include <set>

#include "accredit/diststats/MAUniStats.h"
#include "accredit/host/internal/PMMLElements.h"
#include "accredit/host/internal/PMMLValues.h"
#include "accredit/host/internal/XMLText.h"

using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::MCUniStats;

namespace {

MAProblemKind ProblemOf(const MCUniStats& stats) {
    if (!MCDetail::SummaryIsGood(stats)) return MAProblemKind::SummaryStats;
    if (!MCDetail::MarginsAreGood(stats)) return MAProblemKind::CutPoints;
    return MCDetail::FrequenciesAreGood(stats) ? MAProblemKind::None : MAProblemKind::Frequencies;
}

}  // namespace

MAVariableProblem MAFindExportProblem(const MADistStats& stats,
                                      const std::vector<std::string>& missingValues) {
    std::set<std::string> names;
    int categories = 0;
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        const auto problem = [slot](MAProblemKind kind, int category = -1) {
            return MAVariableProblem{static_cast<int>(slot), kind, category};
        };
        const MCUniStats uniStats = MAUniStatsOf(stats, slot);
        if (!MCDetail::IsXMLText(uniStats.GetVarName())) return problem(MAProblemKind::Name);
        if (!names.insert(uniStats.GetVarName()).second) {
            return problem(MAProblemKind::RepeatedName);
        }
        if (stats.IsCategorical(slot)) {
            const IMCEncoder& encoder =
                *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
            if (!MCDetail::CountFieldValues(encoder, categories)) {
                return problem(MAProblemKind::TooManyCategories);
            }
            const MCDetail::FieldValues values = MCDetail::ReadFieldValues(encoder, missingValues);
            if (values.unheld >= 0) return problem(MAProblemKind::Category, values.unheld);
            if (values.repeated >= 0) {
                return problem(MAProblemKind::RepeatedCategory, values.repeated);
            }
        }
        const MAProblemKind kind = ProblemOf(uniStats);
        if (kind != MAProblemKind::None) return problem(kind);
    }
    return {};
}
