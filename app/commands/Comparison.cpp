#include "app/commands/Comparison.h"

#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/documents/Comparison.h"
#include "accredit/documents/NewRecords.h"
#include "accredit/host/MAStatus.h"

using MADocuments::Reference;
using MADocuments::UncountedData;
using MCCommon::MCStatus;

namespace app {

namespace {

// The number, unless it is the library's mark for none.
std::optional<double> Known(double number) {
    if (number == -1.0) return std::nullopt;
    return number;
}

// Squares of deviations overflow to an infinity or a NaN as the order of the rows has it.
bool HasFiniteMoments(const MADistStats& stats, unsigned int slot) {
    double mean = 0.0;
    double deviation = 0.0;
    stats.GetMeanStdDev(slot, mean, deviation);
    return std::isfinite(mean) && std::isfinite(deviation);
}

double CasesInBins(const MADistStats& stats, unsigned int slot) {
    const std::vector<double>& frequencies = stats.GetFrequencies(slot);
    return std::accumulate(frequencies.begin(), frequencies.end(), 0.0);
}

// Why the library's test of a variable failed or says nothing; empty if it says something.
std::string WhyNoPValue(const MADistStats& reference, unsigned int slot,
                        const MADistStats& newStats, const MAVariableResult& test) {
    if (!reference.IsCategorical(slot) && test.newSlot >= 0) {
        const auto newSlot = static_cast<unsigned int>(test.newSlot);
        if (!HasFiniteMoments(reference, slot)) {
            return "Not tested: the reference's values are too large";
        }
        if (!HasFiniteMoments(newStats, newSlot)) return "Not tested: the new values are too large";
    }
    if (test.status.GetCode() == MAStatusBadCutPoints) {
        return "Not tested: the reference's values vary too little for their size to be put in "
               "bins";
    }
    if (!test.status.IsOK()) return test.status.GetMessage();
    const double cases = CasesInBins(reference, slot);
    if (!std::isfinite(cases)) return "Not tested: the reference's frequencies are too large";
    if (test.pValue != -1.0) return {};
    if (reference.GetFrequencies(slot).empty()) return "Not tested: the reference has no bins";
    if (!(cases > 0.0)) return "Not tested: the reference's frequencies sum to 0";
    return "Not tested: the frequencies cannot be compared";
}

// Why there is no verdict or else no p-value; empty if there are both. What keeps the library's
// test from a p-value is mostly what keeps the verdict away, but an unknown category is not.
std::string Reason(const std::string& whyNoPValue, const MAVariableComparison& comparison) {
    const bool isUntested = comparison.verdict == MAVerdict::NotTested;
    const bool isUnknown = comparison.result.status.GetCode() == MAStatusCategoriesDiffer;
    if (!isUntested || (!whyNoPValue.empty() && !isUnknown)) return whyNoPValue;
    switch (comparison.untested) {
        case MAUntested::NoBins:
            return "Not tested: the reference has no bins";
        case MAUntested::OtherCutPoints:
            return "Not tested: the bins are not those of the reference";
        case MAUntested::NoFrequencies:
            return "Not tested: the reference's frequencies sum to 0 or overflow";
        default:
            return "Not tested: too few cases in every category";
    }
}

CheckedVariable Describe(const Reference& reference, unsigned int slot) {
    CheckedVariable variable;
    const MADistStats& stats = reference.stats;
    variable.name = MADocuments::VariableName(stats, slot);
    variable.categorical = stats.IsCategorical(slot);
    variable.referenceCases = stats.GetNumberOfCases(slot);
    variable.referenceUncounted = UncountedAt(reference, slot);
    return variable;
}

// The comparison of every variable. With a new summary that has none of them the library says that
// it is empty; to a person each of them is what is not there.
std::vector<MAVariableComparison> CompareAll(const Reference& reference,
                                             const Reference& newSummary, double alpha) {
    std::vector<MAVariableComparison> comparisons =
        MADocuments::Compare(reference, newSummary, alpha);
    if (newSummary.stats.GetVarCount() > 0) return comparisons;
    for (MAVariableComparison& comparison : comparisons) {
        comparison.result.status = MCStatus(MAStatusVariableNotFound, false);
    }
    return comparisons;
}

}  // namespace

CheckResult Compare(std::shared_ptr<const Reference> reference, Reference newSummary,
                    const std::vector<double>& weights, double alpha) {
    const MADistStats& stats = reference->stats;
    const MADistStats& newStats = newSummary.stats;
    std::vector<MAVariableComparison> comparisons = CompareAll(*reference, newSummary, alpha);
    const double expected = MAExpectedAccreditation(comparisons, weights);
    const std::vector<std::vector<double>> usable = MADocuments::UsableCutPoints(stats);
    CheckResult result;
    bool allTested = true;
    bool cutPointsAreGood = true;
    std::vector<MAVariableResult> tests;
    for (unsigned int slot = 0; slot < comparisons.size(); ++slot) {
        MAVariableComparison& comparison = comparisons[slot];
        MAVariableResult& test = comparison.result;
        CheckedVariable variable = Describe(*reference, slot);
        if (!weights.empty()) variable.weight = weights[slot];
        if (test.newSlot >= 0) {
            const auto newSlot = static_cast<unsigned int>(test.newSlot);
            variable.newCases = newStats.GetNumberOfCases(newSlot);
            variable.newUncounted = UncountedAt(newSummary, newSlot);
            // No pass takes these cut points, so the new data has no bins here.
            if (usable[slot].empty() && !stats.GetCutPoints(slot).empty()) {
                test.status = MCStatus(MAStatusBadCutPoints, false);
                cutPointsAreGood = false;
            }
        }
        const std::string whyNoPValue = WhyNoPValue(stats, slot, newStats, test);
        if (whyNoPValue.empty()) {
            variable.pValue = test.pValue;
            variable.statistic = Known(test.statistic);
            variable.degreesOfFreedom = Known(test.degreesOfFreedom);
        }
        variable.status = test.status;
        variable.cutPoints = usable[slot];
        variable.reason = Reason(whyNoPValue, comparison);
        allTested = allTested && variable.pValue;
        tests.push_back(test);
        variable.comparison = std::move(comparison);
        result.variables.push_back(std::move(variable));
    }

    double accreditation = -1.0;
    result.status = MAAccreditation(tests, weights, accreditation);
    // Cut points that no pass takes keep the new data from being summarised, so they come first.
    if (!cutPointsAreGood) result.status = MCStatus(MAStatusBadCutPoints, false);
    if (cutPointsAreGood && allTested) {
        result.accreditation = Known(accreditation);
        if (result.accreditation) result.expectedAccreditation = Known(expected);
    }
    result.reference = std::move(reference);
    result.newSummary = std::move(newSummary);
    return result;
}

void ExplainUntested(const std::string& name, const std::string& problem, CheckResult& result) {
    for (CheckedVariable& variable : result.variables) {
        if (variable.name != name) continue;
        variable.status = MCStatus(MAStatusVariableNotInput, false);
        variable.reason = "Not tested: the column " + problem;
    }
}

std::optional<std::uint64_t> RowCount(const Reference& summary) {
    if (summary.stats.GetVarCount() == 0 || !UncountedAt(summary, 0).missing) return std::nullopt;
    const UncountedData& data = summary.uncounted[0];
    return summary.stats.GetNumberOfCases(0) + *data.missing + data.unreadable.value_or(0);
}

}  // namespace app
