#include "app/commands/Comparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <set>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/diststats/MAProblems.h"
#include "app/base/Errors.h"
#include "app/data/CsvRecordIter.h"

using MADocuments::Reference;
using MCCommon::MCStatus;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

using Slots = std::set<unsigned int>;

// The variables of the reference as they are when the new data has none of them.
CheckResult Describe(const MADistStats& reference, const std::vector<double>& weights) {
    CheckResult result;
    result.status = MCStatus(MAStatusVariableNotFound, false);
    for (unsigned int slot = 0; slot < reference.GetVarCount(); ++slot) {
        CheckedVariable variable;
        variable.name = reference.GetVarList().GetVarAt(reference.GetVarListIndex(slot))->GetName();
        variable.categorical = reference.IsCategorical(slot);
        variable.referenceCases = reference.GetNumberOfCases(slot);
        variable.status = result.status;
        variable.reason = result.status.GetMessage();
        if (!weights.empty()) variable.weight = weights[slot];
        result.variables.push_back(std::move(variable));
    }
    return result;
}

// The reference's cut points in the order of the new list's input variables. Values that hardly
// vary at their size, or are so far apart that their moments overflow, have cut points that do not
// ascend, which no data pass takes. They are left out, so that the other variables can be compared
// all the same; `unusable` gets the slots of the reference.
std::vector<std::vector<double>> UsableCutPoints(const MADistStats& reference,
                                                 const MCVarList& newList, Slots& unusable) {
    std::vector<int> slots;
    MAAccreditor::MatchVariables(newList, reference.GetVarList(), slots);
    std::vector<std::vector<double>> cutPoints;
    cutPoints.reserve(slots.size());
    for (const int slot : slots) {
        cutPoints.push_back(reference.GetCutPoints(static_cast<unsigned int>(slot)));
    }
    for (int bad = MAFindBadCutPoints(newList, cutPoints); bad >= 0;
         bad = MAFindBadCutPoints(newList, cutPoints)) {
        cutPoints[static_cast<std::size_t>(bad)].clear();
        unusable.insert(static_cast<unsigned int>(slots[static_cast<std::size_t>(bad)]));
    }
    return cutPoints;
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

// Why the test of a variable failed or says nothing; empty if it says something.
std::string WhyNotTested(const MADistStats& reference, unsigned int slot,
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

}  // namespace

CheckResult Compare(const Reference& reference, CsvReader& newData,
                    const std::vector<double>& weights, MCQueryCancel& cancel) {
    const MADistStats& stats = reference.stats;
    CsvRecordIter records(newData, ColumnsLike(stats.GetVarList(), newData.Headings()),
                          reference.missing);
    CheckResult result = Describe(stats, weights);
    if (records.VarList().GetNumInputVars() == 0) {
        // A malformed file is refused all the same.
        while (records.GetNextRecord()) continue;
        return result;
    }

    Slots unusable;
    MAAccreditor accreditor(records.VarList(), records, &cancel);
    const MCStatus summarised =
        accreditor.ComputeDistStats(UsableCutPoints(stats, records.VarList(), unusable));
    if (summarised.GetCode() == MAStatusCancelled) throw Cancelled();
    if (!summarised.IsOK()) throw InputError(newData.Name() + ": " + summarised.GetMessage());

    const MADistStats& newStats = accreditor.GetDistStats();
    std::vector<MAVariableResult> tests = MATestVariables(stats, newStats);
    bool allTested = true;
    for (unsigned int slot = 0; slot < tests.size(); ++slot) {
        MAVariableResult& test = tests[slot];
        CheckedVariable& variable = result.variables[slot];
        if (test.newSlot >= 0) {
            const auto newSlot = static_cast<unsigned int>(test.newSlot);
            variable.newCases = newStats.GetNumberOfCases(newSlot);
            variable.unknownCategory = records.UnknownCategory(newStats.GetVarListIndex(newSlot));
        }
        if (unusable.count(slot) != 0) test.status = MCStatus(MAStatusBadCutPoints, false);
        variable.status = test.status;
        variable.reason = WhyNotTested(stats, slot, newStats, test);
        if (variable.reason.empty()) variable.pValue = test.pValue;
        allTested = allTested && variable.pValue;
    }

    double accreditation = -1.0;
    result.status = MAAccreditation(tests, weights, accreditation);
    // -1 is the library's mark for no number.
    if (accreditation != -1.0 && allTested) result.accreditation = accreditation;
    // Cut points that no pass takes keep the new data from being summarised, so they come first.
    if (!unusable.empty()) {
        result.status = MCStatus(MAStatusBadCutPoints, false);
        result.accreditation.reset();
    }
    return result;
}

}  // namespace app
