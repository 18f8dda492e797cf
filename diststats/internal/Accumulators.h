#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "accredit/diststats/VarSummary.h"

namespace MADetail {

/// Two doubles that are reckoned with at once, as they stand side by side in a vector register.
/// Every lane is rounded as a double by itself is.
using Lanes = double __attribute__((vector_size(2 * sizeof(double))));

/// The answer to a comparison of lanes: -1 where it holds, else 0.
using LaneMask = decltype(Lanes{} < Lanes{});

/// What one pass over the records gathers, laid out for speed: continuous variables two by two in
/// lanes, without a branch that depends on a value. It gives to the last bit what
/// VarSummary::AddValue gives for one variable after the other.
class Accumulators {
public:
    /// Of each slot the position of its value in a record, whether it is categorical (1) or
    /// continuous (0), and its cut points; `cutPoints` may be empty if CountBins is not called.
    Accumulators(const std::vector<int>& varIndex, const std::vector<std::int16_t>& categorical,
                 const std::vector<std::vector<double>>& cutPoints);

    /// Takes the memory that CountCategories needs for a record, so that it cannot fail. This and
    /// the next three take the values of one record.
    void ReserveCategories(const double* values);
    /// Counts a record's categories.
    void CountCategories(const double* values);
    /// Folds a record's continuous values in.
    void Fold(const double* values);
    /// Counts a record's continuous values in their bins.
    void CountBins(const double* values);

    /// Puts what CountCategories and Fold gathered into the slots' summaries and frequencies.
    void StoreSummaries(std::vector<VarSummary>& summaries,
                        std::vector<std::vector<double>>& frequencies) const;
    /// Puts what CountBins gathered into the slots' frequencies.
    void StoreBins(std::vector<std::vector<double>>& frequencies) const;

private:
    /// Longer lists of cut points are searched, these are counted through. Computed ones have 5.
    static constexpr std::size_t kShortList = 5;

    struct Variable {
        std::size_t slot;
        std::size_t position;  // Of its value in a record.
    };

    // Of an odd number of variables the last stands in both lanes, and the second is not stored.
    using VariablePair = std::array<Variable, 2>;

    struct Categories {
        Variable variable;
        std::vector<double> counts;  // First the values that are no category, then by code.
    };

    struct Moments {
        VariablePair variables;
        Lanes count, min, max, mean, squares;
    };

    struct ShortBins {
        VariablePair variables;
        std::array<Lanes, kShortList>
            cutPoints;  // Shorter lists end with NaN, which nothing is above.
        std::array<std::array<double, kShortList + 2>, 2> counts;  // The last: the missing values.
    };

    struct LongBins {
        Variable variable;
        const std::vector<double>* cutPoints;
        std::vector<double> counts;
    };

    // A lane that has had no value yet. The first one, a NaN too, is its minimum and maximum.
    struct Unseen {
        std::size_t pair;
        std::size_t lane;
    };

    void StartWith(const double* values);

    std::vector<Categories> mCategories;
    std::vector<Moments> mMoments;
    std::vector<Unseen> mUnseen;
    std::vector<ShortBins> mShortBins;
    std::vector<LongBins> mLongBins;
};

}  // namespace MADetail
