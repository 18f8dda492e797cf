// The comparison of every variable of a reference with a new summary.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/accreditation/internal/VariableTests.h"
#include "accredit/accreditation/internal/WeightedMean.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/internal/StrictlyAscending.h"

using MCMTD_NAMESPACE::IMCEncoder;

namespace {

constexpr double kCrowded = 0.95;
constexpr double kModerate = 0.1;
constexpr double kMajor = 0.25;

struct Moments {
    double mean = MCMV::Missing();
    double stdDev = MCMV::Missing();
};

Moments MomentsOf(const MADistStats& stats, unsigned int slot) {
    Moments moments;
    stats.GetMeanStdDev(slot, moments.mean, moments.stdDev);
    return moments;
}

std::optional<double> IfFinite(double value) {
    return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

bool IsKnown(double value) { return std::isfinite(value) && !MCMV::IsMissing(value); }

double Sum(const std::vector<double>& counts) {
    return std::accumulate(counts.begin(), counts.end(), 0.0);
}

// A reference that is constant and has no bins.
bool IsConstant(const MADistStats& stats, unsigned int slot) {
    double min = MCMV::Missing();
    double max = MCMV::Missing();
    stats.GetMinMax(slot, min, max);
    return !stats.IsCategorical(slot) && stats.GetFrequencies(slot).empty() && IsKnown(min) &&
           min == max;
}

// The reference's frequencies over the bins of MACutPointsFor, of which there is one more than cut
// points. A constant lies on the highest of those.
std::vector<double> ReferenceBins(const MADistStats& stats, unsigned int slot,
                                  std::size_t cutPoints) {
    if (!IsConstant(stats, slot)) return stats.GetFrequencies(slot);
    std::vector<double> bins(cutPoints + 1, 0.0);
    bins[cutPoints - 1] = static_cast<double>(stats.GetNumberOfCases(slot));
    return bins;
}

// The new frequencies over the bins between these cut points; nothing if the summary has others.
// One without bins has no cases or a single value, which lies in one of them.
std::optional<std::vector<double>> NewBins(const MADistStats& stats, unsigned int slot,
                                           const std::vector<double>& cutPoints) {
    if (stats.GetCutPoints(slot) == cutPoints) return stats.GetFrequencies(slot);
    std::vector<double> bins(cutPoints.size() + 1, 0.0);
    if (IsConstant(stats, slot)) {
        double value = MCMV::Missing();
        double max = MCMV::Missing();
        stats.GetMinMax(slot, value, max);
        const auto above = std::lower_bound(cutPoints.begin(), cutPoints.end(), value);
        bins[static_cast<std::size_t>(above - cutPoints.begin())] =
            static_cast<double>(stats.GetNumberOfCases(slot));
        return bins;
    }
    const bool isEmpty = stats.GetNumberOfCases(slot) == 0 && stats.GetFrequencies(slot).empty();
    return isEmpty ? std::optional(bins) : std::nullopt;
}

std::optional<MACells> Bins(const MADistStats& refStats, unsigned int slot,
                            const MADistStats& newStats, unsigned int newSlot) {
    const std::vector<double> cutPoints = MACutPointsFor(refStats, slot);
    // Values that hardly vary at their size can have cut points that coincide.
    if (cutPoints.empty() || !MCDetail::IsStrictlyAscending(cutPoints.begin(), cutPoints.end())) {
        return std::nullopt;
    }
    const std::optional<std::vector<double>> observed = NewBins(newStats, newSlot, cutPoints);
    MACells cells;
    cells.reference = ReferenceBins(refStats, slot, cutPoints.size());
    if (!observed || cells.reference.size() != observed->size()) return std::nullopt;
    cells.observed = *observed;
    return cells;
}

const IMCEncoder& EncoderOf(const MADistStats& stats, unsigned int slot) {
    return *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
}

// The codes in the order of what they stand for, and last those that no value encodes to: the order
// in which categories were met must not show in sums over them.
std::vector<int> ByValue(std::vector<int> codes, const IMCEncoder& encoder) {
    struct Category {
        bool isNameless;
        std::string text;
        double number;
        int code;
    };
    if (codes.size() < 2) return codes;
    const bool areNumbers = encoder.GetValueType() == IMCEncoder::ValueTypeNumber;
    std::vector<Category> categories;
    categories.reserve(codes.size());
    for (const int code : codes) {
        Category category{false, {}, 0.0, code};
        if (areNumbers) {
            category.number = encoder.DecodeNumber(code);
        } else {
            category.text = encoder.DecodeString(code);
        }
        category.isNameless =
            std::isnan(category.number) || MADetail::MapCategory(encoder, encoder, code) != code;
        if (category.isNameless) category.number = 0.0;
        categories.push_back(std::move(category));
    }
    const auto order = [](const Category& each) {
        return std::tie(each.isNameless, each.text, each.number, each.code);
    };
    std::sort(categories.begin(), categories.end(),
              [&order](const Category& left, const Category& right) {
                  return order(left) < order(right);
              });
    std::transform(categories.begin(), categories.end(), codes.begin(),
                   [](const Category& each) { return each.code; });
    return codes;
}

// A category without a frequency has no cases, so the vectors bound the work, whatever the encoders
// claim.
MACells Categories(const MADistStats& refStats, unsigned int slot, const MADistStats& newStats,
                   unsigned int newSlot) {
    const std::vector<double>& newFreq = newStats.GetFrequencies(newSlot);
    MACells cells;
    cells.reference = refStats.GetFrequencies(slot);
    cells.observed.assign(cells.reference.size(), 0.0);
    cells.newCodes.assign(cells.reference.size(), -1);
    cells.referenceCodes.resize(cells.reference.size());
    std::iota(cells.referenceCodes.begin(), cells.referenceCodes.end(), 0);
    std::vector<std::int16_t> seen(newFreq.size(), 0);
    for (std::size_t c = 0; c < cells.reference.size(); ++c) {
        const int code = MADetail::MapCategory(EncoderOf(refStats, slot),
                                               EncoderOf(newStats, newSlot), static_cast<int>(c));
        const auto k = static_cast<std::size_t>(code);
        if (code < 0 || k >= newFreq.size() || seen[k] != 0) continue;
        cells.observed[c] = newFreq[k];
        cells.newCodes[c] = code;
        seen[k] = 1;
    }
    std::vector<int> unknown;
    for (std::size_t k = 0; k < newFreq.size(); ++k) {
        if (seen[k] == 0) unknown.push_back(static_cast<int>(k));
    }
    unknown = ByValue(unknown, EncoderOf(newStats, newSlot));
    for (const int code : unknown) {
        cells.reference.push_back(0.0);
        cells.observed.push_back(newFreq[static_cast<std::size_t>(code)]);
        cells.referenceCodes.push_back(-1);
        cells.newCodes.push_back(code);
    }
    return cells;
}

void Tabulate(const std::vector<double>& reference, const std::vector<double>& observed,
              MAChange& change) {
    change.test = MATestTwoSamples(reference, observed);
    change.shareMoved = MAShareMoved(reference, observed);
    if (!change.test) change.verdict = MAVerdict::NotTested;
}

// What is known of a variable in one of the samples.
struct Rows {
    std::uint64_t cases = 0;
    MAUncountedData uncounted;

    // Nothing if one of the counts is not known; what cannot be unreadable is none.
    std::optional<double> Total() const {
        if (!uncounted.missing) return std::nullopt;
        return static_cast<double>(cases) + static_cast<double>(*uncounted.missing) +
               static_cast<double>(uncounted.unreadable.value_or(0));
    }
};

void TabulateUncounted(const Rows& reference, const Rows& observed,
                       std::optional<std::uint64_t> MAUncountedData::*member,
                       MAUncountedChange& change) {
    const auto table = [member](const Rows& rows, std::optional<double>& share) {
        std::vector<double> counts;
        const std::optional<std::uint64_t>& count = rows.uncounted.*member;
        const std::optional<double> total = rows.Total();
        if (!count || !total) return counts;
        const auto number = static_cast<double>(*count);
        counts = {number, *total - number};
        if (*total > 0.0) share = number / *total;
        return counts;
    };
    const std::vector<double> before = table(reference, change.referenceShare);
    const std::vector<double> after = table(observed, change.newShare);
    if (before.empty() || after.empty()) return;
    // Two samples without rows differ in nothing.
    if (Sum(before) + Sum(after) > 0.0) Tabulate(before, after, change);
}

MAUncountedData At(const std::vector<MAUncountedData>& data, unsigned int slot) {
    return slot < data.size() ? data[slot] : MAUncountedData();
}

// Why the table of the values has no test.
MAUntested Reason(const MADistStats& refStats, unsigned int slot, const MACells& cells) {
    // Of a reference without cases no cell reaches 5, whatever the bins are.
    if (refStats.GetNumberOfCases(slot) == 0) return MAUntested::TooFewCases;
    if (!refStats.IsCategorical(slot) && cells.reference.empty()) {
        return MACutPointsFor(refStats, slot).empty() ? MAUntested::NoBins
                                                      : MAUntested::OtherCutPoints;
    }
    const double sum = Sum(cells.reference);
    if (!std::isfinite(sum) || !(sum > 0.0)) return MAUntested::NoFrequencies;
    return MAUntested::TooFewCases;
}

void CompareValues(const MADistStats& refStats, unsigned int slot, const MADistStats& newStats,
                   unsigned int newSlot, MAVariableComparison& comparison) {
    const auto cases = static_cast<double>(refStats.GetNumberOfCases(slot));
    const auto newCases = static_cast<double>(newStats.GetNumberOfCases(newSlot));
    comparison.cells = MACellsOf(refStats, slot, newStats, newSlot).value_or(MACells());
    const MACells& cells = comparison.cells;
    comparison.mostChanged = MAMostChangedCell(cells.reference, cells.observed);
    // Two samples without values differ in nothing.
    if (cases + newCases > 0.0) {
        Tabulate(cells.reference, cells.observed, comparison.values);
        if (!comparison.values.test) comparison.untested = Reason(refStats, slot, cells);
    }
    if (refStats.IsCategorical(slot)) return;
    const Moments before = MomentsOf(refStats, slot);
    const Moments after = MomentsOf(newStats, newSlot);
    // A deviation of 0 leaves no finite number.
    if (!IsKnown(before.stdDev)) return;
    if (newCases > 0.0) {
        comparison.meanShift = IfFinite((after.mean - before.mean) / before.stdDev);
    }
    if (newCases > 1.0) comparison.deviationRatio = IfFinite(after.stdDev / before.stdDev);
}

// The expected p-value rests on the frequencies that the test of the variable compares.
double Expected(const MADistStats& refStats, unsigned int slot, const MADistStats& newStats,
                unsigned int newSlot) {
    const std::vector<double>& frequencies = refStats.GetFrequencies(slot);
    const auto filled = std::count_if(frequencies.begin(), frequencies.end(),
                                      [](double frequency) { return frequency > 0.0; });
    return MAExpectedPValue(frequencies.size(), static_cast<std::size_t>(filled), Sum(frequencies),
                            Sum(newStats.GetFrequencies(newSlot)));
}

template <class Take>
void ForEachTest(std::vector<MAVariableComparison>& comparisons, Take take) {
    for (MAVariableComparison& comparison : comparisons) {
        for (MAChange* change : {&comparison.values, static_cast<MAChange*>(&comparison.missing),
                                 static_cast<MAChange*>(&comparison.unreadable)}) {
            if (change->test && change->test->cells > 1) take(*change);
        }
    }
}

MAVerdict Judge(double stabilityIndex) {
    if (stabilityIndex < kModerate) return MAVerdict::Minor;
    return stabilityIndex < kMajor ? MAVerdict::Moderate : MAVerdict::Major;
}

// Judges all tests together, since their number raises the bar for each.
void JudgeAll(std::vector<MAVariableComparison>& comparisons, double alpha) {
    std::vector<double> pValues;
    ForEachTest(comparisons,
                [&pValues](const MAChange& change) { pValues.push_back(change.test->pValue); });
    const std::vector<double> adjusted = MAAdjustPValues(pValues);
    auto next = adjusted.begin();
    ForEachTest(comparisons, [&next, alpha](MAChange& change) {
        change.adjustedPValue = *next++;
        if (*change.adjustedPValue < alpha) change.verdict = Judge(change.test->stabilityIndex);
    });
    for (MAVariableComparison& comparison : comparisons) {
        comparison.verdict = std::max(
            {comparison.values.verdict, comparison.missing.verdict, comparison.unreadable.verdict});
    }
}

}  // namespace

std::vector<double> MACutPointsFor(const MADistStats& refStats, unsigned int slot) {
    // A categorical variable may have a list from the caller of its data pass.
    if (refStats.IsCategorical(slot)) return {};
    if (!IsConstant(refStats, slot)) return refStats.GetCutPoints(slot);
    double value = MCMV::Missing();
    double max = MCMV::Missing();
    refStats.GetMinMax(slot, value, max);
    const double below = std::nextafter(value, -std::numeric_limits<double>::infinity());
    // Below the lowest datum there is nothing but the missing value.
    if (MCMV::IsMissing(below)) return {value};
    return {below, value};
}

std::optional<MACells> MACellsOf(const MADistStats& refStats, unsigned int slot,
                                 const MADistStats& newStats, unsigned int newSlot) {
    if (refStats.IsCategorical(slot)) return Categories(refStats, slot, newStats, newSlot);
    return Bins(refStats, slot, newStats, newSlot);
}

std::optional<MACrowdedBin> MAFindCrowdedBin(const MADistStats& stats, unsigned int slot) {
    const std::vector<double>& frequencies = stats.GetFrequencies(slot);
    if (stats.IsCategorical(slot) || frequencies.empty()) return std::nullopt;
    const auto fullest = std::max_element(frequencies.begin(), frequencies.end());
    const double share = *fullest / Sum(frequencies);
    if (!(share > kCrowded)) return std::nullopt;
    const std::vector<double>& cutPoints = stats.GetCutPoints(slot);
    const auto bin = static_cast<std::size_t>(fullest - frequencies.begin());
    // Nothing can hide in a bin of a single value.
    const bool isValue = bin > 0 && bin < cutPoints.size() &&
                         std::nextafter(cutPoints[bin - 1], cutPoints[bin]) == cutPoints[bin];
    if (isValue) return std::nullopt;
    return MACrowdedBin{static_cast<int>(bin), share};
}

std::vector<MAVariableComparison> MACompareVariables(
    const MADistStats& refStats, const MADistStats& newStats,
    const std::vector<MAUncountedData>& refUncounted,
    const std::vector<MAUncountedData>& newUncounted, double alpha) {
    std::vector<MAVariableComparison> comparisons;
    unsigned int slot = 0;
    for (const MAVariableResult& result : MATestVariables(refStats, newStats)) {
        MAVariableComparison comparison;
        comparison.result = result;
        comparison.crowdedBin = MAFindCrowdedBin(refStats, slot);
        const Rows before{refStats.GetNumberOfCases(slot), At(refUncounted, slot)};
        Rows after;
        if (result.newSlot < 0) {
            comparison.values.verdict = MAVerdict::NotTested;
            comparison.untested = MAUntested::NotMatched;
        } else {
            const auto newSlot = static_cast<unsigned int>(result.newSlot);
            after = {newStats.GetNumberOfCases(newSlot), At(newUncounted, newSlot)};
            comparison.expectedPValue = Expected(refStats, slot, newStats, newSlot);
            CompareValues(refStats, slot, newStats, newSlot, comparison);
        }
        TabulateUncounted(before, after, &MAUncountedData::missing, comparison.missing);
        TabulateUncounted(before, after, &MAUncountedData::unreadable, comparison.unreadable);
        comparisons.push_back(std::move(comparison));
        ++slot;
    }
    JudgeAll(comparisons, alpha);
    return comparisons;
}

double MAExpectedAccreditation(const std::vector<MAVariableComparison>& comparisons,
                               const std::vector<double>& weights) {
    std::vector<MAVariableResult> results;
    std::vector<MAVariableResult> expected;
    for (const MAVariableComparison& comparison : comparisons) {
        results.push_back(comparison.result);
        expected.push_back(comparison.result);
        expected.back().pValue = comparison.expectedPValue.value_or(-1.0);
    }
    double accreditation = -1.0;
    if (!MAAccreditation(results, weights, accreditation).IsOK()) return -1.0;
    return MADetail::WeightedMean(expected, weights);
}
