// The summary as a listing for a reader.

#include <cstddef>
#include <ostream>

#include "accredit/diststats/MADistStatsImp.h"

namespace {

void PrintList(const char* label, const std::vector<double>& values, std::ostream& out) {
    out << label;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) out << ", ";
        out << values[i];
    }
    out << std::endl;
}

void PrintSummary(const VarSummary& summary, std::ostream& out) {
    out << "Summary stats (min, max, mean, std. dev):" << std::endl;
    const char* separator = "";
    for (const double value : {summary.min, summary.max, summary.mean, summary.stdDev}) {
        out << separator;
        if (!MCMV::IsMissing(value)) out << value;
        separator = ", ";
    }
    out << std::endl;
}

}  // namespace

void MADistStatsImp::Display(const std::string& title, std::ostream& out) const {
    out << std::endl << std::endl;
    out << "MADistStats: " << title << std::endl;
    for (std::size_t slot = 0; slot < mVarIndex.size(); ++slot) {
        const bool continuous = mCategorical[slot] == 0;
        out << std::endl;
        out << "Variable name: " << mVarList.GetVarAt(mVarIndex[slot])->GetName() << std::endl;
        out << "Case count: " << mSummaries[slot].count << std::endl;
        if (continuous) PrintList("Cut points: ", mCutPoints[slot], out);
        PrintList("Frequencies: ", mFrequencies[slot], out);
        if (continuous) PrintSummary(mSummaries[slot], out);
    }
}
