#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "accredit/diststats/VarSummary.h"
#include "accredit/diststats/internal/BlockFold.h"

namespace MADetail {

/// What a pass over the records gathers.
enum class Gathered { Summaries, Bins, SummariesAndBins };

/// What one pass over the records gathers, laid out for speed: records are copied into a block, and
/// when it is full its variables are gone through several at a time. It gives to the last bit what
/// VarSummary::AddValue gives for one value after the other.
class Accumulators {
public:
    /// Of each slot the position of its value in a record, whether it is categorical (1) or
    /// continuous (0), and its cut points; `cutPoints` may be empty if no bins are gathered, and
    /// must outlive this. `fold` does the arithmetic.
    Accumulators(const std::vector<int>& varIndex, const std::vector<std::int16_t>& categorical,
                 const std::vector<std::vector<double>>& cutPoints, Gathered gathered,
                 const BlockFold& fold = BlockFoldInUse());
    Accumulators(const Accumulators&) = delete;
    Accumulators& operator=(const Accumulators&) = delete;
    ~Accumulators() = default;

    /// Takes the memory that Add, of this record and those before it, needs, so that nothing of it
    /// fails.
    void Reserve(const double* values);

    /// Takes the values of one record.
    void Add(const double* values) {
        mContinuous.Copy(values, mRow);
        mCategorical.Copy(values, mRow + mCategorical.first);
        mRow += mStride;
        if (++mRecords == mBlockRecords) Finish();
    }

    /// Folds in what has been added since the last block was full. To be called before what was
    /// gathered is stored; more can be added behind it.
    void Finish();

    /// Puts what was gathered into the slots' summaries and the frequencies of categories.
    void StoreSummaries(std::vector<VarSummary>& summaries,
                        std::vector<std::vector<double>>& frequencies) const;
    /// Puts the bins that were gathered into the slots' frequencies.
    void StoreBins(std::vector<std::vector<double>>& frequencies) const;

private:
    /// Longer lists of cut points are searched, these are compared with. Computed ones have 5.
    static constexpr std::size_t kShortList = 2 * kCutPointsAtOnce;

    // Variables whose values stand side by side in the block, in the order of their slots.
    struct Columns {
        std::size_t first = 0;  // A multiple of kGroup.
        std::vector<std::size_t> slots;
        std::vector<std::size_t> positions;  // Of the values in a record.
        // Their number if they stand side by side in the record, too, and fill a group; else 0.
        std::size_t neighbours = 0;

        std::size_t Groups() const { return (slots.size() + kGroup - 1) / kGroup; }
        void Copy(const double* values, double* row) const {
            if (neighbours > 0) {
                // In pieces of one length, which the compiler copies in registers. The last one
                // ends with the last value.
                const double* const from = values + positions[0];
                for (std::size_t i = kGroup; i < neighbours; i += kGroup) {
                    std::memcpy(row + i - kGroup, from + i - kGroup, kGroup * sizeof(double));
                }
                std::memcpy(row + neighbours - kGroup, from + neighbours - kGroup,
                            kGroup * sizeof(double));
            } else {
                for (const std::size_t position : positions) *row++ = values[position];
            }
        }
    };

    // The lists of a group's variables, as many parts as the longest one has.
    struct ShortLists {
        std::size_t group;
        std::array<std::size_t, kGroup> sizes;  // 0 of a variable without a short list
        std::vector<CutPointCounts> parts;
    };

    struct LongList {
        std::size_t column;  // In the block.
        const std::vector<double>* cutPoints;
        std::vector<double> counts;
    };

    double* Row(std::size_t record) {
        return reinterpret_cast<double*>(mBlock.data()) + record * mStride;
    }
    void TakeCutPoints(const std::vector<std::vector<double>>& cutPoints);
    std::vector<double> BinsOf(const ShortLists& lists, std::size_t lane) const;
    bool StartMoments(std::size_t variable);
    void CountManyCodes();
    void CountLongLists();
    std::vector<double> CodesOf(std::size_t variable) const;

    const BlockFold* mFold;
    bool mGathersSummaries;
    bool mGathersBins;

    Columns mContinuous;
    Columns mCategorical;
    std::size_t mStride;
    std::size_t mBlockRecords;
    std::vector<GroupOfDoubles> mBlock;  // mBlockRecords rows of mStride values
    double* mRow;                        // of the next record
    std::size_t mRecords = 0;            // in the block,
    std::uint64_t mFolded = 0;           // and before it

    std::vector<Moments> mMoments;  // a group each
    // The variables that have had no value yet. The first one, a NaN too, is minimum and maximum.
    std::vector<std::size_t> mUnseen;
    std::vector<ShortLists> mShortLists;
    std::vector<LongList> mLongLists;
    std::vector<CodeCounts> mFewCodes;            // a variable each
    std::vector<std::vector<double>> mManyCodes;  // of codes from kFewCodes on
};

}  // namespace MADetail
