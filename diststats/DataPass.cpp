// One pass over the records: counting categories, folding values in, filling bins. VarSummary's
// operations stand here so that the loop over the records has them inline.

#include <cmath>
#include <cstddef>

#include "diststats/MADistStatsImp.h"
#include "diststats/VarSummary.h"

using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCMTD_NAMESPACE::MCVarList;

namespace {

// One poll in so many records keeps the query's cost out of the pass.
constexpr unsigned long kRecordsPerPoll = 20;

// Lists of so many cut points or fewer are counted through; computed ones have 5.
constexpr std::size_t kShortList = 8;

// The lower bound of `value` in the non-empty list: the first cut point that is not below it.
std::size_t FindBin(const std::vector<double>& cutPoints, double value) {
    const double* first = cutPoints.data();
    std::size_t length = cutPoints.size();
    // In an ascending list the lower bound is the number of cut points below the value, and
    // counting a handful of them, without a branch to mispredict, is faster than halving the range.
    // Data whose moments overflow can give cut points with NaN among them, the first one always.
    if (length <= kShortList && !std::isnan(first[0])) {
        std::size_t below = 0;
        for (std::size_t j = 0; j < length; ++j) below += first[j] < value ? 1 : 0;
        return below;
    }
    while (length > 0) {
        const std::size_t half = length / 2;
        const bool right = first[half] < value;
        first += right ? half + 1 : 0;
        length = right ? length - half - 1 : half;
    }
    return static_cast<std::size_t>(first - cutPoints.data());
}

// Whether truncation toward zero gives a category code that a 32-bit integer holds.
bool IsCategoryCode(double value) { return value > -1.0 && value < 2147483648.0; }

void CountCategory(std::vector<double>& frequencies, double value) {
    const auto code = static_cast<std::size_t>(static_cast<int>(value));
    if (frequencies.size() <= code) frequencies.resize(code + 1, 0.0);
    frequencies[code] += 1.0;
}

// The factor (n - 1) / n of the sum of squares. Most variables of a record have the same number of
// cases, so remembering the last one saves most of these divisions.
class Shrinkage {
public:
    double Of(double n) {
        if (n != mN) {
            mN = n;
            mFactor = (n - 1.0) / n;
        }
        return mFactor;
    }

private:
    double mN = 0.0;
    double mFactor = 0.0;
};

// Welford's update with a value that is not missing: what AddValue does, with the factor remembered
// over the variables of a record.
inline void Fold(VarSummary& summary, double value, Shrinkage& shrinkage) {
    ++summary.count;
    // By way of a signed number, whose conversion is a single instruction.
    const auto n = static_cast<double>(static_cast<long>(summary.count));
    if (MCMV::IsMissing(summary.min) || summary.min > value) summary.min = value;
    if (MCMV::IsMissing(summary.max) || summary.max < value) summary.max = value;
    const double d = value - summary.mean;
    summary.mean += d / n;
    summary.stdDev += shrinkage.Of(n) * (d * d);
}

}  // namespace

void VarSummary::AddValue(double value) {
    if (MCMV::IsMissing(value)) return;
    Shrinkage shrinkage;
    Fold(*this, value, shrinkage);
}

void VarSummary::Finish() {
    if (MCMV::IsMissing(min)) {
        mean = MCMV::Missing();
        stdDev = MCMV::Missing();
    } else if (count <= 1) {
        stdDev = MCMV::Missing();
    } else if (max == min) {
        stdDev = 0.0;
    } else {
        stdDev = std::sqrt(stdDev / static_cast<double>(count - 1));
    }
}

MCStatus MADistStatsImp::MakeADataPass(const MCVarList& varList, MultiPassRecordIter& iter,
                                       bool updateSummaries, bool updateBins) {
    MCStatus status;
    const int recordSize = static_cast<int>(varList.Size());
    for (unsigned long counter = 0; status.IsOK() && iter.HasMoreRecords(); ++counter) {
        if (counter % kRecordsPerPoll == 0 && mQueryCancel && mQueryCancel->QueryCancel()) {
            return {MAStatusCancelled, false};
        }
        const Record* record = iter.GetNextRecord();
        if (!record) {
            const bool stopped = iter.GetErrorState() == MultiPassRecordIter::ErrorStateCancelled;
            return {stopped ? MAStatusCancelled : MAStatusRecordSource, false};
        }
        if (record->Size() != recordSize) return {MAStatusRecordSize, false};
        status = ProcessRecord(varList, *record, updateSummaries, updateBins);
    }
    return status;
}

MCStatus MADistStatsImp::ProcessRecord(const MCVarList& /*varList*/, const Record& record,
                                       bool updateSummaries, bool updateBins) {
    const double* values = record.GetAll();
    const std::size_t slots = mVarIndex.size();
    Shrinkage shrinkage;
    for (std::size_t slot = 0; slot < slots; ++slot) {
        const double value = values[mVarIndex[slot]];
        if (MCMV::IsMissing(value)) continue;
        if (mCategorical[slot] != 0) {
            if (updateSummaries && IsCategoryCode(value)) {
                CountCategory(mFrequencies[slot], value);
                mSummaries[slot].AddCase();
            }
            continue;
        }
        if (updateSummaries) Fold(mSummaries[slot], value, shrinkage);
        if (updateBins && !mCutPoints[slot].empty()) {
            mFrequencies[slot][FindBin(mCutPoints[slot], value)] += 1.0;
        }
    }
    return {};
}
