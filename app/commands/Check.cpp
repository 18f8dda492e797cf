#include "app/commands/Check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/diststats/MADistStats.h"
#include "accredit/documents/MissingTokens.h"
#include "accredit/documents/StoredReference.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/data/CsvReader.h"
#include "app/data/CsvRecordIter.h"

using MCCommon::MCStatus;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

// One weight for each column of the reference that is not ignored, in their order; none if the user
// gave none.
std::vector<double> WeightsInOrder(const CheckOptions& options,
                                   const std::vector<std::string>& headings) {
    if (options.weights.empty()) return {};
    std::unordered_map<std::string_view, double> byName;
    for (const auto& [column, weight] : options.weights) {
        if (!byName.emplace(column, weight).second) {
            throw UsageError(fmt::format("two weights for the column \"{}\"", Printable(column)));
        }
    }
    const std::unordered_set<std::string_view> ignored(options.columns.ignored.begin(),
                                                       options.columns.ignored.end());
    std::vector<double> weights;
    double sum = 0.0;
    for (const std::string& heading : headings) {
        if (ignored.count(heading) != 0) continue;
        const auto named = byName.find(heading);
        weights.push_back(named == byName.end() ? 1.0 : named->second);
        sum += weights.back();
        if (named != byName.end()) byName.erase(named);
    }
    if (!byName.empty()) {
        throw UsageError(
            fmt::format("the weighted column \"{}\" is ignored or not in the reference",
                        Printable(byName.begin()->first)));
    }
    if (!std::isfinite(sum)) throw UsageError("the weights are too large to be added up");
    return weights;
}

// A column to be ignored may be one of either file.
void RequireColumns(const std::vector<std::string>& names,
                    const std::vector<std::string>& reference,
                    const std::vector<std::string>& newData) {
    std::unordered_set<std::string_view> known(reference.begin(), reference.end());
    known.insert(newData.begin(), newData.end());
    for (const std::string& name : names) {
        if (known.count(name) == 0) {
            throw UsageError(fmt::format("neither file has a column \"{}\"", Printable(name)));
        }
    }
}

MADistStats Summarise(CsvRecordIter& records, const std::string& name, MCQueryCancel& cancel) {
    try {
        MADistStats stats(new MADistStatsImp(records.VarList(), records, {}, &cancel));
        return stats;
    } catch (const MCStatus& status) {
        if (status.GetCode() == MAStatusCancelled) throw Cancelled();
        if (status.GetCode() == MAStatusNoInputVars) {
            throw UsageError(name + ": every column is ignored");
        }
        throw InputError(name + ": " + status.GetMessage());
    }
}

// The reference's cut points in the order of the new list's input variables, and the reference's
// slots whose cut points cannot be used: values that hardly vary at their size, or are so far apart
// that their variance overflows, have cut points that do not ascend. These are left out, so that
// the other variables can be compared all the same.
struct CutPoints {
    CutPoints(const MADistStats& reference, const MCVarList& newList) {
        std::vector<int> slots;
        MAAccreditor::MatchVariables(newList, reference.GetVarList(), slots);
        for (const int slot : slots) {
            const auto referenceSlot = static_cast<unsigned int>(slot);
            const std::vector<double>& cuts = reference.GetCutPoints(referenceSlot);
            const bool ascend =
                std::adjacent_find(cuts.begin(), cuts.end(), [](double left, double right) {
                    return !(left < right);
                }) == cuts.end();
            lists.push_back(ascend ? cuts : std::vector<double>());
            if (!ascend) unusable.push_back(referenceSlot);
        }
    }

    std::vector<std::vector<double>> lists;
    std::vector<unsigned int> unusable;
};

// The variables of the reference as they are when the new data has none of them.
CheckResult Describe(const MADistStats& reference, const std::vector<double>& weights) {
    CheckResult result;
    result.status = MCStatus(MAStatusVariableNotFound, false);
    for (unsigned int slot = 0; slot < reference.GetVarCount(); ++slot) {
        CheckedVariable variable;
        variable.name = reference.GetVarList().GetVarAt(reference.GetVarListIndex(slot))->GetName();
        variable.categorical = reference.IsCategorical(slot);
        variable.referenceCases = reference.GetNumberOfCases(slot);
        variable.status = MCStatus(MAStatusVariableNotFound, false);
        if (!weights.empty()) variable.weight = weights[slot];
        result.variables.push_back(std::move(variable));
    }
    return result;
}

CheckResult Compare(const MADistStats& reference, CsvRecordIter& records, const std::string& name,
                    const std::vector<double>& weights, MCQueryCancel& cancel) {
    CheckResult result = Describe(reference, weights);
    if (records.VarList().GetNumInputVars() == 0) {
        // A malformed file is refused all the same.
        while (records.GetNextRecord()) continue;
        return result;
    }

    MAAccreditor accreditor(records.VarList(), records, &cancel);
    const CutPoints cutPoints(reference, records.VarList());
    const MCStatus summarised = accreditor.ComputeDistStats(cutPoints.lists);
    if (summarised.GetCode() == MAStatusCancelled) throw Cancelled();
    if (!summarised.IsOK()) throw InputError(name + ": " + summarised.GetMessage());

    result.status = accreditor.ComputeAccreditation(reference, weights);
    // -1 is the library's mark for no number.
    const double accreditation = accreditor.GetAccreditation();
    if (accreditation != -1.0) result.accreditation = accreditation;

    const MADistStats& newStats = accreditor.GetDistStats();
    const std::vector<MAVariableResult> tests = MATestVariables(reference, newStats);
    for (std::size_t slot = 0; slot < tests.size(); ++slot) {
        CheckedVariable& variable = result.variables[slot];
        const int newSlot = tests[slot].newSlot;
        if (newSlot >= 0) {
            const auto slotInNew = static_cast<unsigned int>(newSlot);
            variable.newCases = newStats.GetNumberOfCases(slotInNew);
            variable.unknownCategory = records.UnknownCategory(newStats.GetVarListIndex(slotInNew));
        }
        if (tests[slot].pValue != -1.0) variable.pValue = tests[slot].pValue;
        variable.status = tests[slot].status;
    }
    // Cut points that cannot be used fail the data pass, so this status comes before those of the
    // comparison, as it would had they been passed on.
    for (const unsigned int slot : cutPoints.unusable) {
        result.status = result.variables[slot].status = MCStatus(MAStatusBadCutPoints, false);
        result.variables[slot].pValue.reset();
        result.accreditation.reset();
    }
    return result;
}

CheckResult CheckAgainstData(const CheckOptions& options, Progress& progress,
                             MCQueryCancel& cancel) {
    if (options.referencePath == "-") {
        throw UsageError("the reference cannot be standard input, unless it is a stored one");
    }
    const MissingTokens missing(options.missing);
    // Both files are opened first, so that a wrong name is not found out only after a long pass.
    CsvReader reference(options.referencePath, Reading::Repeated, progress, cancel);
    CsvReader newData(options.newPath, Reading::Once, progress, cancel);
    CheckHeadings(reference, options.columns.ignored);
    CheckNewHeadings(newData, reference.Headings(), options.columns.ignored);
    RequireColumns(options.columns.ignored, reference.Headings(), newData.Headings());
    const std::vector<double> weights = WeightsInOrder(options, reference.Headings());

    const std::vector<Column> columns = SettleKinds(reference, options.columns, missing);
    CsvRecordIter referenceRecords(reference, columns, missing);
    const MADistStats referenceStats =
        Summarise(referenceRecords, Printable(options.referencePath), cancel);

    CsvRecordIter newRecords(newData, ColumnsLike(referenceStats.GetVarList(), newData.Headings()),
                             missing);
    return Compare(referenceStats, newRecords, Printable(options.newPath), weights, cancel);
}

void RefuseSettledOptions(const CheckOptions& options) {
    const auto refuse = [](const char* option) {
        throw UsageError(
            fmt::format("{}: this was settled when the reference was learned", option));
    };
    if (!options.missing.empty()) refuse("--missing");
    if (!options.columns.categorical.empty()) refuse("--categorical");
    if (!options.columns.continuous.empty()) refuse("--continuous");
}

CheckResult CheckAgainstDocument(const CheckOptions& options, const SourceText& document,
                                 Progress& progress, MCQueryCancel& cancel) {
    RefuseSettledOptions(options);
    const StoredReference reference = ReadReference(document, options.columns.ignored);
    const MCVarList& list = reference.stats.GetVarList();
    std::vector<std::string> names;
    for (unsigned int i = 0; i < list.Size(); ++i) {
        names.push_back(list.GetVarAt(static_cast<int>(i))->GetName());
    }
    CsvReader newData(options.newPath, Reading::Once, progress, cancel);
    // A column that was ignored when the reference was learned is not in it, but may be ignored
    // once more where the new data has it.
    RequireColumns(options.columns.ignored, names, newData.Headings());
    CheckNewHeadings(newData, names, options.columns.ignored);
    const std::vector<double> weights = WeightsInOrder(options, names);
    CsvRecordIter newRecords(newData, ColumnsLike(list, newData.Headings()), reference.missing);
    return Compare(reference.stats, newRecords, Printable(options.newPath), weights, cancel);
}

}  // namespace

CheckResult Check(const CheckOptions& options, Progress& progress, MCQueryCancel& cancel) {
    if (options.referencePath == "-" && options.newPath == "-") {
        throw UsageError("only one of the two files can be standard input");
    }
    // What is no document is read as data, and not from a pipe, which could keep the program
    // waiting.
    const Reading reading = options.referencePath == "-" ? Reading::Once : Reading::Repeated;
    const std::optional<SourceText> document =
        LoadDocument(options.referencePath, reading, progress, cancel);
    return document ? CheckAgainstDocument(options, *document, progress, cancel)
                    : CheckAgainstData(options, progress, cancel);
}

}  // namespace app
