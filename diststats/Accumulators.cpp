#include "accredit/diststats/internal/Accumulators.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "accredit/host/MCMV.h"

namespace MADetail {

namespace {

Lanes Both(double value) { return Lanes{value, value}; }

// All bits of a mask's lane, set, are a NaN.
Lanes NaNWhere(LaneMask mask, Lanes value) {
    return reinterpret_cast<Lanes>(reinterpret_cast<LaneMask>(value) | mask);
}

template <typename Variables>
Lanes ValuesOf(const Variables& variables, const double* values) {
    return Lanes{values[variables[0].position], values[variables[1].position]};
}

// The variables two by two; the last of an odd number beside itself.
template <typename Variable, typename Use>
void ForEachPair(const std::vector<Variable>& variables, Use use) {
    for (std::size_t i = 0; i < variables.size(); i += 2) {
        use({variables[i], variables[std::min(i + 1, variables.size() - 1)]});
    }
}

template <typename Variables>
std::size_t LanesInUse(const Variables& variables) {
    return variables[0].slot == variables[1].slot ? 1 : 2;
}

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

// Where a value is counted: 0 if it is no category code, or 1 more than the code, which is the
// value truncated toward zero. A code that no 32-bit integer holds gives the first one beyond them.
std::size_t CategoryIndex(double value) {
    const double notBelow = value > -1.0 ? value : -1.0;  // Also of NaN and of the missing value.
    const double bounded = notBelow < 2147483648.0 ? notBelow : 2147483648.0;
    return static_cast<std::size_t>(static_cast<std::int64_t>(bounded) + 1);
}

constexpr std::size_t kBeyondCodes = 2147483649;

}  // namespace

Accumulators::Accumulators(const std::vector<int>& varIndex,
                           const std::vector<std::int16_t>& categorical,
                           const std::vector<std::vector<double>>& cutPoints) {
    std::vector<Variable> continuous;
    std::vector<Variable> withShortLists;
    for (std::size_t slot = 0; slot < varIndex.size(); ++slot) {
        const Variable variable{slot, static_cast<std::size_t>(varIndex[slot])};
        if (categorical[slot] != 0) {
            mCategories.push_back({variable, {0.0}});
            continue;
        }
        continuous.push_back(variable);
        if (cutPoints.empty() || cutPoints[slot].empty()) continue;
        const std::vector<double>& cuts = cutPoints[slot];
        if (cuts.size() <= kShortList && !std::isnan(cuts[0])) {
            withShortLists.push_back(variable);
        } else {
            mLongBins.push_back({variable, &cuts, std::vector<double>(cuts.size() + 1, 0.0)});
        }
    }
    ForEachPair(continuous, [this](const VariablePair& pair) {
        const Lanes missing = Both(MCMV::Missing());
        mUnseen.push_back({mMoments.size(), 0});
        mUnseen.push_back({mMoments.size(), 1});
        mMoments.push_back({pair, Both(0.0), missing, missing, Both(0.0), Both(0.0)});
    });
    ForEachPair(withShortLists, [&](const VariablePair& pair) {
        const std::vector<double>& first = cutPoints[pair[0].slot];
        const std::vector<double>& second = cutPoints[pair[1].slot];
        ShortBins bins{pair, {}, {}};
        const double none = std::numeric_limits<double>::quiet_NaN();
        for (std::size_t j = 0; j < kShortList; ++j) {
            bins.cutPoints[j] =
                Lanes{j < first.size() ? first[j] : none, j < second.size() ? second[j] : none};
        }
        mShortBins.push_back(bins);
    });
}

void Accumulators::ReserveCategories(const double* values) {
    for (Categories& categories : mCategories) {
        const std::size_t index = CategoryIndex(values[categories.variable.position]);
        std::vector<double>& counts = categories.counts;
        if (index < counts.capacity() || index >= kBeyondCodes) continue;
        counts.reserve(std::max(index + 1, 2 * counts.capacity()));
    }
}

void Accumulators::CountCategories(const double* values) {
    for (Categories& categories : mCategories) {
        const double value = values[categories.variable.position];
        const std::size_t index = CategoryIndex(value);
        if (index < categories.counts.size()) {
            categories.counts[index] += 1.0;
        } else if (index < kBeyondCodes) {
            categories.counts.resize(index + 1, 0.0);
            categories.counts[index] = 1.0;
        }
    }
}

void Accumulators::Fold(const double* values) {
    if (!mUnseen.empty()) StartWith(values);
    const Lanes missing = Both(MCMV::Missing());
    for (Moments& moments : mMoments) {
        const Lanes x = ValuesOf(moments.variables, values);
        const LaneMask absent = x == missing;
        const Lanes n = moments.count + 1.0;
        // Adding this 0 changes nothing: neither the mean nor the squares are ever -0.
        const Lanes d = absent ? Both(0.0) : x - moments.mean;
        moments.squares += (moments.count / n) * (d * d);
        moments.mean += d / n;
        moments.count += absent ? Both(0.0) : Both(1.0);
        const Lanes seen = NaNWhere(absent, x);
        moments.min = seen < moments.min ? seen : moments.min;
        moments.max = seen > moments.max ? seen : moments.max;
    }
}

void Accumulators::StartWith(const double* values) {
    const auto starts = [this, values](const Unseen& unseen) {
        Moments& moments = mMoments[unseen.pair];
        const double x = values[moments.variables[unseen.lane].position];
        if (MCMV::IsMissing(x)) return false;
        moments.min[unseen.lane] = x;
        moments.max[unseen.lane] = x;
        return true;
    };
    mUnseen.erase(std::remove_if(mUnseen.begin(), mUnseen.end(), starts), mUnseen.end());
}

void Accumulators::CountBins(const double* values) {
    const Lanes missing = Both(MCMV::Missing());
    for (ShortBins& bins : mShortBins) {
        const Lanes x = ValuesOf(bins.variables, values);
        // In an ascending list the lower bound is the number of cut points below the value.
        LaneMask index = {0, 0};
        for (const Lanes& cut : bins.cutPoints) index -= cut < x;
        index = x == missing ? LaneMask{kShortList + 1, kShortList + 1} : index;
        bins.counts[0][static_cast<std::size_t>(index[0])] += 1.0;
        bins.counts[1][static_cast<std::size_t>(index[1])] += 1.0;
    }
    for (LongBins& bins : mLongBins) {
        const double x = values[bins.variable.position];
        if (!MCMV::IsMissing(x)) bins.counts[LowerBound(*bins.cutPoints, x)] += 1.0;
    }
}

void Accumulators::StoreSummaries(std::vector<VarSummary>& summaries,
                                  std::vector<std::vector<double>>& frequencies) const {
    for (const Categories& categories : mCategories) {
        const std::size_t slot = categories.variable.slot;
        frequencies[slot].assign(categories.counts.begin() + 1, categories.counts.end());
        double cases = 0.0;
        for (const double count : frequencies[slot]) cases += count;
        summaries[slot].count = static_cast<unsigned long>(cases);
    }
    for (const Moments& moments : mMoments) {
        for (std::size_t lane = 0; lane < LanesInUse(moments.variables); ++lane) {
            VarSummary& summary = summaries[moments.variables[lane].slot];
            summary.count = static_cast<unsigned long>(moments.count[lane]);
            summary.min = moments.min[lane];
            summary.max = moments.max[lane];
            summary.mean = moments.mean[lane];
            summary.stdDev = moments.squares[lane];
        }
    }
}

void Accumulators::StoreBins(std::vector<std::vector<double>>& frequencies) const {
    for (const ShortBins& bins : mShortBins) {
        for (std::size_t lane = 0; lane < LanesInUse(bins.variables); ++lane) {
            std::vector<double>& stored = frequencies[bins.variables[lane].slot];
            std::copy_n(bins.counts[lane].begin(), stored.size(), stored.begin());
        }
    }
    for (const LongBins& bins : mLongBins) frequencies[bins.variable.slot] = bins.counts;
}

}  // namespace MADetail
