#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCStatus.h"

/// @file
/// What changed between a reference and new data: how sure, how much, and does it matter. All of it
/// is made of the counts and moments that two summaries hold. The functions only read their
/// arguments, and any thread may call them.

/// Pearson's chi-square test that two samples come from one distribution, and the stability index
/// over its cells. See MATestTwoSamples.
struct ACCREDIT_EXPORT MATwoSampleTest {
    double statistic = 0.0;         ///< The sum of (count - expected)^2 / expected, 0 or more.
    double degreesOfFreedom = 0.0;  ///< The number of cells less 1.
    /// The probability of a statistic above this one if nothing changed, from 0 to 1; 1 for a
    /// single cell.
    double pValue = 1.0;
    int cells = 0;        ///< Cells of the test, the pooled one included.
    int pooledCells = 0;  ///< Cells of the table that were pooled into one.
    /// The stability index over the cells of the test, 0 or more: the sum of (q - p) ln(q / p),
    /// where p = (R + 1/2) / (N + c/2) and q = (O + 1/2) / (M + c/2) are the shares of a cell in
    /// the reference and in the new data, N and M the cases and c the cells. Noise alone makes it
    /// about (c - 1) (1/N + 1/M).
    double stabilityIndex = 0.0;
};

/// Tests whether two samples come from one distribution, by Pearson's chi-square of homogeneity
/// over the 2 x c table of their counts, which takes the reference as a sample too. `reference` and
/// `observed` have one count for each cell, in the same order.
///
/// Cells without counts are left out. Cells whose expected count in either sample, N or M times
/// (R + O) / (N + M), is below 5 are pooled into one, which becomes the last; if that is still
/// below 5, it takes in the smallest of the others, the first of equal ones.
///
/// There is no test if no cell reaches 5 by itself, nor of vectors of different lengths, of counts
/// that are negative or not finite, or so large that the statistic is not a number.
///
/// Sources: K. Pearson, Biometrika 8 (1911), 250-254, for the test; W. G. Cochran, Biometrics 10
/// (1954), 417-451, for the 5; H. Jeffreys, Proc. R. Soc. A 186 (1946), 453-461, for the index.
ACCREDIT_EXPORT std::optional<MATwoSampleTest> MATestTwoSamples(
    const std::vector<double>& reference, const std::vector<double>& observed);

/// The share of the cases that would have to move to another cell to make one distribution of the
/// other: half the sum of |R/N - O/M|, from 0 to 1 (the total variation distance). Nothing if one
/// of the samples has no cases, if the counts are none (see MATestTwoSamples), or if N times M is
/// not a finite number above 0.
ACCREDIT_EXPORT std::optional<double> MAShareMoved(const std::vector<double>& reference,
                                                   const std::vector<double>& observed);

/// The index of the cell whose share |R/N - O/M| changed most, the first of equal ones. -1 if no
/// share changed and where MAShareMoved gives nothing.
ACCREDIT_EXPORT int MAMostChangedCell(const std::vector<double>& reference,
                                      const std::vector<double>& observed);

/// The p-values of several tests adjusted for their number by Holm's method, in their order: the
/// chance that any of so many tests alarms although nothing changed is at most alpha, if those with
/// an adjusted p-value below alpha alarm. Each becomes at least what it was and at most 1.
///
/// Source: S. Holm, Scandinavian Journal of Statistics 6 (1979), 65-70.
ACCREDIT_EXPORT std::vector<double> MAAdjustPValues(const std::vector<double>& pValues);

/// The cut points with which new data is to be summarised, so that it can be compared with this
/// variable of a reference: its own, one for each margin between two bins, ascending. Of a variable
/// that is constant at c and has no bins these are the largest double below c and c; then whatever
/// is not c lies in another bin. The tests of MATestVariables do not look at those. None for a
/// categorical variable, and for a continuous one that varies but has no bins.
ACCREDIT_EXPORT std::vector<double> MACutPointsFor(const MADistStats& refStats, unsigned int slot);

/// The counts of one variable in both samples, cell by cell.
struct ACCREDIT_EXPORT MACells {
    std::vector<double> reference;  ///< The reference's cases.
    std::vector<double> observed;   ///< The new cases; as many entries.
    /// Of a categorical variable, for each cell: the code of its category in the reference, or -1
    /// where its frequencies do not reach.
    std::vector<int> referenceCodes;
    /// The code in the new summary, or -1 where that has no such category or no frequency for it.
    std::vector<int> newCodes;
};

/// The cells of the variable that has `slot` in the reference and `newSlot` in the new summary: its
/// bins, lowest first; or the reference's categories in code order, and behind them those that only
/// the new summary has, numbers ascending or texts in the order of their bytes, and last those that
/// no value encodes to. So the order of the new data does not show. Nothing if the bins of a
/// continuous variable are not those of MACutPointsFor; a new summary without bins will do if it
/// has no cases or a single value.
ACCREDIT_EXPORT std::optional<MACells> MACellsOf(const MADistStats& refStats, unsigned int slot,
                                                 const MADistStats& newStats, unsigned int newSlot);

/// The bin in which more than 0.95 of the cases lie.
struct ACCREDIT_EXPORT MACrowdedBin {
    int bin = 0;         ///< Its index, the lowest bin being 0.
    double share = 0.0;  ///< Its share of the cases, from 0.95 to 1.
};

/// The fullest bin of a continuous variable, if its share of the cases is above 0.95: one value far
/// out makes bins that put nearly all others into one, and then a change among those cannot be seen
/// in the counts. Nothing otherwise, without bins, and for a bin that holds a single value.
ACCREDIT_EXPORT std::optional<MACrowdedBin> MAFindCrowdedBin(const MADistStats& stats,
                                                             unsigned int slot);

/// How many data of a variable are in none of its cells. A summary does not hold these counts.
struct ACCREDIT_EXPORT MAUncountedData {
    std::optional<std::uint64_t> missing;     ///< Nothing if it is not known.
    std::optional<std::uint64_t> unreadable;  ///< No numbers where numbers belong; the same.
};

/// What a comparison says of a variable, from the best to the worst.
enum class MAVerdict {
    Unchanged,  ///< No change that is more than chance.
    Minor,      ///< A change, by a stability index below 0.1.
    Moderate,   ///< From 0.1.
    NotTested,  ///< Nothing can be said.
    Major,      ///< From 0.25.
};

/// Why the values of a variable were not tested.
enum class MAUntested {
    No,              ///< They were.
    NotMatched,      ///< The new data has no such variable; see the status.
    NoBins,          ///< The reference varies but has no bins.
    OtherCutPoints,  ///< The bins of the two are not the same.
    NoFrequencies,   ///< The reference has cases, but its frequencies sum to 0 or overflow.
    TooFewCases,     ///< No cell has an expected count of 5 in both samples.
};

/// One table of counts of a variable: its values, or those data against all others that are missing
/// or unreadable.
struct ACCREDIT_EXPORT MAChange {
    std::optional<MATwoSampleTest> test;   ///< Nothing if it could not be carried out.
    std::optional<double> adjustedPValue;  ///< Nothing for a test of a single cell.
    std::optional<double> shareMoved;      ///< See MAShareMoved.
    /// Unchanged also for a single cell; NotTested without a test, unless both samples are empty.
    MAVerdict verdict = MAVerdict::Unchanged;
};

/// The same of data that are missing, or unreadable.
struct ACCREDIT_EXPORT MAUncountedChange : MAChange {
    std::optional<double> referenceShare;  ///< Of all rows; nothing if it is not known.
    std::optional<double> newShare;        ///< The same of the new data.
};

/// What one variable of a reference looks like in the new data.
struct ACCREDIT_EXPORT MAVariableComparison {
    MAVariableResult result;  ///< What MATestVariables gives.
    /// The p-value that is to be expected if nothing changed; see MAExpectedPValue. Nothing where
    /// the variable is in one summary only.
    std::optional<double> expectedPValue;
    MACells cells;                         ///< Empty if there are none to be compared.
    int mostChanged = -1;                  ///< See MAMostChangedCell.
    MAChange values;                       ///< Of the cases, over the cells.
    MAUntested untested = MAUntested::No;  ///< Why the values were not tested.
    MAUncountedChange missing;             ///< What is not known has no test, and is unchanged.
    MAUncountedChange unreadable;  ///< The same; of a categorical variable usually not known.
    /// The new mean less the reference's, in standard deviations of the reference. Nothing for a
    /// categorical variable, where a mean does not exist, where that deviation is 0, does not exist
    /// or is not finite, and where the shift is too large for a number.
    std::optional<double> meanShift;
    /// The new standard deviation divided by the reference's; the same.
    std::optional<double> deviationRatio;
    std::optional<MACrowdedBin> crowdedBin;    ///< Of the reference.
    MAVerdict verdict = MAVerdict::Unchanged;  ///< The worst of the three.
};

/// Compares every input variable of the reference with the new summary, which is to have the cut
/// points of MACutPointsFor. One entry for each slot of the reference, in slot order.
///
/// `refUncounted` has one entry for each slot of the reference, `newUncounted` one for each slot of
/// the new summary, in slot order; entries that are not there count as not known. The tables of
/// missing and of unreadable data are over all rows, those with values included.
///
/// A change is a test whose p-value, adjusted by Holm's method over all tests of more than one cell
/// of the new summary, is below `alpha`, from 0 to 1; how large it is, the stability index says.
/// Weights have no part in it.
ACCREDIT_EXPORT std::vector<MAVariableComparison> MACompareVariables(
    const MADistStats& refStats, const MADistStats& newStats,
    const std::vector<MAUncountedData>& refUncounted,
    const std::vector<MAUncountedData>& newUncounted, double alpha);

/// The mean of the p-value that MATestVariables gives, if the new data comes from the distribution
/// that the reference is a sample of: P(F(k, k') > (1 + M/N) k'/k), where k is the number of the
/// reference's `cells` less 1, k' that of its `filledCells`, which have cases, less 1, N the
/// reference's cases and M the new ones, above 0. It is 1 where k' is 0.
///
/// It is not 1/2, because the test takes the reference as exact, and it passes over empty cells
/// without lowering the degrees of freedom. Then the statistic is (1 + M/N) times a chi-square with
/// k' degrees of freedom, and a p-value the chance that a chi-square with k exceeds it. With cells
/// of few cases it is an upper bound.
ACCREDIT_EXPORT double MAExpectedPValue(std::size_t cells, std::size_t filledCells, double refCases,
                                        double newCases);

/// The accreditation that is to be expected if nothing changed: the mean of the variables' expected
/// p-values with the weights of the accreditation. -1 where MAAccreditation would give no number.
ACCREDIT_EXPORT double MAExpectedAccreditation(const std::vector<MAVariableComparison>& comparisons,
                                               const std::vector<double>& weights);
