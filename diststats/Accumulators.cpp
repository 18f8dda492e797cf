#include "accredit/diststats/internal/Accumulators.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "accredit/host/MCMV.h"

namespace MADetail {

namespace {

// The number of cut points below the value, found by halving. Data whose moments overflow can give
// cut points that begin with NaN; the answer is then what the halving gives. Where NaN only end the
// list, behind -inf, the halving gives the number of cut points below the value, too.
std::size_t LowerBound(const std::vector<double>& cutPoints, double value) {
    const double* first = cutPoints.data();
    std::size_t length = cutPoints.size();
    while (length > 0) {
        const std::size_t half = length / 2;
        const bool right = first[half] < value;
        first += right ? half + 1 : 0;
        length = right ? length - half - 1 : half;
    }
    return static_cast<std::size_t>(first - cutPoints.data());
}

// A block of so many values leaves room for the moments in the cache next to the processor.
constexpr std::size_t kBlockValues = 2048;

constexpr std::size_t kNotMany = static_cast<std::size_t>(-1);

// Where a category code from kFewCodes on is counted, which is the value truncated toward zero.
// What is below that, or is more than any 32-bit integer, is none.
std::size_t ManyCodesIndex(double value) {
    if (!(value >= static_cast<double>(kFewCodes) && value < 2147483648.0)) return kNotMany;
    return static_cast<std::size_t>(value) - kFewCodes;
}

void Fill(GroupOfDoubles& group, double value) {
    std::fill(std::begin(group.lanes), std::end(group.lanes), value);
}

}  // namespace

Accumulators::Accumulators(const std::vector<int>& varIndex,
                           const std::vector<std::int16_t>& categorical,
                           const std::vector<std::vector<double>>& cutPoints, Gathered gathered,
                           const BlockFold& fold)
    : mFold(&fold),
      mGathersSummaries(gathered != Gathered::Bins),
      mGathersBins(gathered != Gathered::Summaries) {
    for (std::size_t slot = 0; slot < varIndex.size(); ++slot) {
        if (categorical[slot] != 0 && !mGathersSummaries) continue;
        Columns& columns = categorical[slot] != 0 ? mCategorical : mContinuous;
        columns.slots.push_back(slot);
        columns.positions.push_back(static_cast<std::size_t>(varIndex[slot]));
    }
    for (Columns* columns : {&mContinuous, &mCategorical}) {
        const std::vector<std::size_t>& positions = columns->positions;
        const std::size_t count = positions.size();
        if (count >= kGroup && positions.back() - positions.front() + 1 == count) {
            columns->neighbours = count;
        }
    }
    mCategorical.first = kGroup * mContinuous.Groups();
    mStride = mCategorical.first + kGroup * mCategorical.Groups();
    mBlockRecords = std::clamp(kBlockValues / std::max(mStride, kGroup), kGroup, kBlockRecords);
    mBlock.resize(mBlockRecords * mStride / kGroup);
    mRow = Row(0);

    if (mGathersSummaries) {
        Moments none{};
        Fill(none.min, MCMV::Missing());
        Fill(none.max, MCMV::Missing());
        mMoments.assign(mContinuous.Groups(), none);
        mUnseen.resize(kGroup * mMoments.size());
        std::iota(mUnseen.begin(), mUnseen.end(), std::size_t{0});
        mFewCodes.resize(mCategorical.slots.size());
        mManyCodes.resize(mCategorical.slots.size());
    }
    if (mGathersBins) TakeCutPoints(cutPoints);
}

void Accumulators::TakeCutPoints(const std::vector<std::vector<double>>& cutPoints) {
    CutPointCounts none{};
    for (GroupOfDoubles& cuts : none.cutPoints) {
        Fill(cuts, std::numeric_limits<double>::quiet_NaN());
    }
    for (std::size_t i = 0; i < mContinuous.slots.size(); ++i) {
        const std::vector<double>& list = cutPoints[mContinuous.slots[i]];
        const std::size_t group = i / kGroup;
        if (list.empty()) continue;
        if (list.size() > kShortList || std::isnan(list[0])) {
            mLongLists.push_back({i, &list, std::vector<double>(list.size() + 1, 0.0)});
            continue;
        }
        if (mShortLists.empty() || mShortLists.back().group != group) {
            mShortLists.push_back({group, {}, {}});
        }
        mShortLists.back().sizes[i % kGroup] = list.size();
        std::vector<CutPointCounts>& parts = mShortLists.back().parts;
        for (std::size_t j = 0; j < list.size(); ++j) {
            if (j / kCutPointsAtOnce == parts.size()) parts.push_back(none);
            parts[j / kCutPointsAtOnce].cutPoints[j % kCutPointsAtOnce].lanes[i % kGroup] = list[j];
        }
    }
}

void Accumulators::Reserve(const double* values) {
    for (std::size_t i = 0; i < mManyCodes.size(); ++i) {
        const std::size_t index = ManyCodesIndex(values[mCategorical.positions[i]]);
        std::vector<double>& counts = mManyCodes[i];
        if (index == kNotMany || index < counts.capacity()) continue;
        counts.reserve(std::max(index + 1, 2 * counts.capacity()));
    }
}

void Accumulators::Finish() {
    if (mRecords == 0) return;
    const Block block{Row(0), mStride, mRecords, static_cast<double>(mFolded)};
    if (mGathersSummaries) {
        const auto starts = [this](std::size_t variable) { return StartMoments(variable); };
        mUnseen.erase(std::remove_if(mUnseen.begin(), mUnseen.end(), starts), mUnseen.end());
        mFold->foldMoments(block, 0, mMoments.data(), mMoments.size());
        for (std::size_t i = 0; i < mFewCodes.size(); i += kGroup) {
            mFold->countCodes(block, mCategorical.first + i, &mFewCodes[i],
                              std::min(kGroup, mFewCodes.size() - i));
        }
        CountManyCodes();
    }
    if (mGathersBins) {
        for (ShortLists& lists : mShortLists) {
            for (CutPointCounts& part : lists.parts) {
                mFold->countAbove(block, kGroup * lists.group, &part);
            }
        }
        CountLongLists();
    }
    mFolded += mRecords;
    mRecords = 0;
    mRow = Row(0);
}

bool Accumulators::StartMoments(std::size_t variable) {
    for (std::size_t record = 0; record < mRecords; ++record) {
        const double x = Row(record)[variable];
        if (MCMV::IsMissing(x)) continue;
        Moments& moments = mMoments[variable / kGroup];
        moments.min.lanes[variable % kGroup] = x;
        moments.max.lanes[variable % kGroup] = x;
        return true;
    }
    return false;
}

void Accumulators::CountManyCodes() {
    for (std::size_t i = 0; i < mManyCodes.size(); ++i) {
        auto& beyond = mFewCodes[i].counts[CodeCounts::kBeyond];
        if (std::count(std::begin(beyond), std::end(beyond), 0) == kCopies) continue;
        std::fill(std::begin(beyond), std::end(beyond), 0);
        std::vector<double>& counts = mManyCodes[i];
        for (std::size_t record = 0; record < mRecords; ++record) {
            const std::size_t index = ManyCodesIndex(Row(record)[mCategorical.first + i]);
            if (index == kNotMany) continue;
            if (index >= counts.size()) counts.resize(index + 1, 0.0);
            counts[index] += 1.0;
        }
    }
}

void Accumulators::CountLongLists() {
    for (LongList& list : mLongLists) {
        for (std::size_t record = 0; record < mRecords; ++record) {
            const double x = Row(record)[list.column];
            if (!MCMV::IsMissing(x)) list.counts[LowerBound(*list.cutPoints, x)] += 1.0;
        }
    }
}

// The cases of each category, up to the highest code seen.
std::vector<double> Accumulators::CodesOf(std::size_t variable) const {
    const std::vector<double>& many = mManyCodes[variable];
    std::vector<double> codes(kFewCodes);
    for (std::size_t code = 0; code < kFewCodes; ++code) {
        const auto& copies = mFewCodes[variable].counts[code + 1];
        codes[code] = static_cast<double>(
            std::accumulate(std::begin(copies), std::end(copies), std::uint64_t{0}));
    }
    codes.insert(codes.end(), many.begin(), many.end());
    while (!codes.empty() && codes.back() == 0.0) codes.pop_back();
    return codes;
}

void Accumulators::StoreSummaries(std::vector<VarSummary>& summaries,
                                  std::vector<std::vector<double>>& frequencies) const {
    for (std::size_t i = 0; i < mCategorical.slots.size(); ++i) {
        const std::size_t slot = mCategorical.slots[i];
        frequencies[slot] = CodesOf(i);
        summaries[slot].count = static_cast<unsigned long>(
            std::accumulate(frequencies[slot].begin(), frequencies[slot].end(), 0.0));
    }
    for (std::size_t i = 0; i < mContinuous.slots.size(); ++i) {
        const Moments& moments = mMoments[i / kGroup];
        const std::size_t lane = i % kGroup;
        VarSummary& summary = summaries[mContinuous.slots[i]];
        summary.count = static_cast<unsigned long>(moments.count.lanes[lane]);
        summary.min = moments.min.lanes[lane];
        summary.max = moments.max.lanes[lane];
        summary.mean = moments.mean.lanes[lane];
        summary.stdDev = moments.squares.lanes[lane];
    }
}

// Above a cut point lie the values of all bins right of it.
std::vector<double> Accumulators::BinsOf(const ShortLists& lists, std::size_t lane) const {
    const auto missing = static_cast<std::uint64_t>(lists.parts[0].missing.lanes[lane]);
    std::vector<double> bins;
    std::uint64_t left = mFolded - missing;
    for (std::size_t j = 0; j < lists.sizes[lane]; ++j) {
        const CutPointCounts& part = lists.parts[j / kCutPointsAtOnce];
        auto above = static_cast<std::uint64_t>(part.above[j % kCutPointsAtOnce].lanes[lane]);
        if (part.cutPoints[j % kCutPointsAtOnce].lanes[lane] < MCMV::Missing()) above -= missing;
        bins.push_back(static_cast<double>(left - above));
        left = above;
    }
    bins.push_back(static_cast<double>(left));
    return bins;
}

void Accumulators::StoreBins(std::vector<std::vector<double>>& frequencies) const {
    for (const ShortLists& lists : mShortLists) {
        for (std::size_t lane = 0; lane < kGroup; ++lane) {
            if (lists.sizes[lane] == 0) continue;
            frequencies[mContinuous.slots[kGroup * lists.group + lane]] = BinsOf(lists, lane);
        }
    }
    for (const LongList& list : mLongLists) {
        frequencies[mContinuous.slots[list.column]] = list.counts;
    }
}

}  // namespace MADetail
