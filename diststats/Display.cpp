// The summary as a listing for a reader.

#include <cstddef>
#include <ostream>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/MAUniStats.h"
#include "accredit/host/MCSummaryStatistics.h"

using MCMTD_NAMESPACE::kMCSummaryStatistics;
using MCMTD_NAMESPACE::MCSummaryStatistic;
using MCMTD_NAMESPACE::MCUniStats;

namespace {

void PrintList(const char* label, const std::vector<double>& values, std::ostream& out) {
    out << label;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) out << ", ";
        out << values[i];
    }
    out << std::endl;
}

void PrintSummary(const MCUniStats::SummStats& summary, std::ostream& out) {
    out << "Summary stats (min, max, mean, std. dev):" << std::endl;
    const char* separator = "";
    for (const MCSummaryStatistic& statistic : kMCSummaryStatistics) {
        const double value = summary.*statistic.value;
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
        if (continuous) {
            const MCUniStats statistics = MAUniStatsOf(*this, static_cast<unsigned int>(slot));
            PrintSummary(statistics.GetSummStats(), out);
        }
    }
}
