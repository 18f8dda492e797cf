#include "app/commands/Check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/InputFile.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/commands/Account.h"
#include "app/commands/ReferenceFile.h"
#include "app/commands/Statements.h"
#include "app/data/CsvReader.h"
#include "app/data/LearnReference.h"
#include "app/data/NewSummary.h"
#include "app/sql/AnsweredTable.h"
#include "app/sql/TableSource.h"

using MADocuments::Reference;

namespace app {

namespace {

using Weights = std::map<std::string_view, double>;

// The weights by column. Each column is one of these headings.
Weights WeightsByColumn(const CheckOptions& options, const std::vector<std::string>& headings) {
    std::set<std::string_view> known(headings.begin(), headings.end());
    for (const std::string& name : options.data.columns.ignored) known.erase(name);
    Weights weights;
    for (const auto& [column, weight] : options.weights) {
        if (!weights.emplace(column, weight).second) {
            throw UsageError(fmt::format("two weights for the column \"{}\"", Printable(column)));
        }
        if (known.count(column) == 0) {
            throw UsageError(
                fmt::format("the weighted column \"{}\" is ignored or not in the reference",
                            Printable(column)));
        }
    }
    double sum = 0.0;
    for (const std::string_view name : known) {
        const auto named = weights.find(name);
        sum += named == weights.end() ? 1.0 : named->second;
    }
    if (!std::isfinite(sum)) throw UsageError("the weights are too large to be added up");
    return weights;
}

// One weight for each slot of the reference; none if the user gave none.
std::vector<double> WeightsInOrder(Weights byColumn, const MADistStats& reference) {
    if (byColumn.empty()) return {};
    std::vector<double> weights(reference.GetVarCount(), 1.0);
    for (unsigned int slot = 0; slot < reference.GetVarCount(); ++slot) {
        const std::string name =
            reference.GetVarList().GetVarAt(reference.GetVarListIndex(slot))->GetName();
        const auto named = byColumn.find(name);
        if (named == byColumn.end()) continue;
        weights[slot] = named->second;
        byColumn.erase(named);
    }
    if (!byColumn.empty()) {
        const std::string_view column = byColumn.begin()->first;
        throw UsageError(
            fmt::format("the weighted column \"{}\" is left out of the reference, because its "
                        "values are keys or dates; {} takes them as categories",
                        Printable(column), ShellOption("--categorical", column)));
    }
    return weights;
}

// A new file that has been opened: data, or the summary that it holds.
struct NewFile {
    std::string name;  // fit to be shown
    std::optional<CsvReader> data;
    std::optional<Reference> summary;
};

NewFile OpenNew(const std::string& path, const CsvFormat& format, Progress& progress,
                MCQueryCancel& cancel) {
    auto file = std::make_unique<InputFile>(path, progress, cancel);
    NewFile opened{file->Name(), std::nullopt, std::nullopt};
    if (const auto document = LoadDocument(*file)) {
        // Of a variable that the reference lacks or ignores nothing is looked at.
        opened.summary = ReferenceIn(*document, {});
    } else {
        opened.data.emplace(std::move(file), Reading::Once, format);
    }
    return opened;
}

// What may be wrong with new data of a single column that the reference does not have; empty if
// nothing is.
std::string WrongDelimiter(const CsvReader& data, const std::vector<std::string>& reference) {
    const std::string& heading = data.Headings().front();
    if (data.Headings().size() > 1 ||
        std::find(reference.begin(), reference.end(), heading) != reference.end()) {
        return {};
    }
    const std::size_t found = heading.find_first_of(kSearchedDelimiters);
    if (found == std::string::npos || heading[found] == data.Delimiter()) return {};
    return fmt::format("{}: there is one column only, \"{}\"; {} sets its parts apart", data.Name(),
                       Shortened(heading), DelimiterOption(heading[found]));
}

// The columns that the files turn out to have, in which those of the options must be.
class KnownColumns {
public:
    KnownColumns(const CheckOptions& options, std::vector<std::string> reference)
        : mOptions(options), mReference(std::move(reference)) {}

    const std::vector<std::string>& OfReference() const { return mReference; }

    // Refuses, once the last file is known, an ignored column that none of them has.
    void Take(const NewFile& file) {
        if (file.data) {
            const std::vector<std::string>& headings = file.data->Headings();
            mHeadings.insert(mHeadings.end(), headings.begin(), headings.end());
        }
        // A stored summary has lost the columns that the reference lacks, and one may be meant.
        mHasSummary = mHasSummary || file.summary;
        if (++mFiles == mOptions.newPaths.size() && !mHasSummary) {
            RequireColumns(mOptions.data.ignoredByOption, {&mReference, &mHeadings},
                           "neither file has a column");
        }
    }

private:
    const CheckOptions& mOptions;
    std::vector<std::string> mReference;
    std::vector<std::string> mHeadings;
    std::size_t mFiles = 0;
    bool mHasSummary = false;
};

CheckResult CheckTable(const SqlOptions& options, const CheckOptions& check,
                       const std::shared_ptr<const Reference>& reference,
                       const std::vector<double>& weights, std::vector<std::string>& remarks,
                       Progress& progress, MCQueryCancel& cancel, std::ostream* log) {
    TableQueries table(options, progress, cancel, log);
    const std::vector<std::string> known = NamesOf(reference->stats.GetVarList());
    const std::vector<std::string> columns = NamesOf(table.Columns());
    RequireColumns(check.data.ignoredByOption, {&known, &columns},
                   "neither the reference nor the table has a column");
    TableSummary made = SummariseTable(*reference, table);
    remarks.insert(remarks.end(), made.remarks.begin(), made.remarks.end());
    CheckResult result = Compare(reference, std::move(made.summary), weights, check.alpha);
    for (const UntestedColumn& each : made.untested) {
        ExplainUntested(each.name, each.problem, result);
    }
    result.newName = table.Name();
    return result;
}

CheckResult CheckAnswers(const Answers& answers, const CheckOptions& check,
                         const std::shared_ptr<const Reference>& reference,
                         const std::vector<double>& weights) {
    TableSummary made = SummariseAnswers(*reference, answers);
    CheckResult result = Compare(reference, std::move(made.summary), weights, check.alpha);
    for (const UntestedColumn& each : made.untested) {
        ExplainUntested(each.name, each.problem, result);
    }
    result.newName = SourceName(answers.head.source);
    return result;
}

}  // namespace

std::vector<std::string> NewLabels(const CheckOptions& options) {
    if (!options.table.answerPaths.empty() && !options.table.sql) return options.table.answerPaths;
    if (!options.table.sql) return options.newPaths;
    const SqlOptions& sql = *options.table.sql;
    return {sql.table.empty() ? "query" : sql.table};
}

Checked Check(const CheckOptions& options, Progress& progress, MCQueryCancel& cancel,
              std::ostream* log) {
    const bool isInput = options.referencePath == "-";
    std::vector<std::string> inputs = options.newPaths;
    inputs.insert(inputs.end(), options.table.answerPaths.begin(), options.table.answerPaths.end());
    if (std::count(inputs.begin(), inputs.end(), "-") + (isInput ? 1 : 0) > 1) {
        throw UsageError("only one of the files can be standard input");
    }
    const CsvFormat& format = options.data.format;
    const std::vector<std::string>& ignored = options.data.columns.ignored;
    auto referenceFile = std::make_unique<InputFile>(options.referencePath, progress, cancel);
    std::optional<Reference> reference;
    std::optional<CsvReader> data;
    std::optional<Answers> answers;
    Checked checked;
    if (const auto document = LoadDocument(*referenceFile)) {
        reference = ReferenceIn(*document, ignored);
        SettleMissing(options.data, "this was settled when the reference was learned", *reference);
        checked.remarks = ContradictionsIn(*reference, document->fileName);
        if (!options.table.answerPaths.empty()) {
            answers = LoadAnswers(options.table.answerPaths.front(), progress, cancel);
            RequireAnswerTo(HeadOfCheck(*document, options.table, options.data.columns), *answers);
        }
    } else if (!options.table.answerPaths.empty()) {
        throw UsageError("--answers belong to a stored reference, and this is data");
    } else {
        data.emplace(std::move(referenceFile), Reading::Repeated, format);
        CheckHeadings(*data, ignored);
    }

    // All that can be told of the options and the files is told before the long passes.
    KnownColumns columns(options,
                         reference ? NamesOf(reference->stats.GetVarList()) : data->Headings());
    const Weights weights = WeightsByColumn(options, columns.OfReference());
    for (const std::string& path : options.newPaths) {
        if (!IsRegularFile(path)) continue;
        const NewFile file = OpenNew(path, format, progress, cancel);
        if (file.data) CheckNewHeadings(*file.data, columns.OfReference(), ignored);
        columns.Take(file);
    }
    if (data) {
        LearnedReference learned =
            LearnReference(*data, options.data.columns, options.data.Missing(), cancel);
        for (const std::string& remark : RemarksOn(learned.data, true)) {
            checked.remarks.push_back(fmt::format("{}: {}", data->Name(), remark));
        }
        reference = std::move(learned.reference);
    }

    const auto shared = std::make_shared<const Reference>(std::move(*reference));
    const std::vector<double> inOrder = WeightsInOrder(weights, shared->stats);
    if (answers) {
        checked.results.push_back(CheckAnswers(*answers, options, shared, inOrder));
    } else if (options.table.sql) {
        checked.results.push_back(CheckTable(*options.table.sql, options, shared, inOrder,
                                             checked.remarks, progress, cancel, log));
    }
    for (const std::string& path : options.newPaths) {
        NewFile file = OpenNew(path, format, progress, cancel);
        if (!IsRegularFile(path)) columns.Take(file);
        if (file.data) {
            CheckNewHeadings(*file.data, columns.OfReference(), ignored);
            const std::string delimiter = WrongDelimiter(*file.data, columns.OfReference());
            if (!delimiter.empty()) checked.remarks.push_back(delimiter);
            file.summary = SummariseLike(*shared, *file.data, cancel).summary;
        } else {
            RequireBinsOf(*shared, *file.summary, file.name);
            const std::vector<std::string> remarks = ContradictionsIn(*file.summary, file.name);
            checked.remarks.insert(checked.remarks.end(), remarks.begin(), remarks.end());
        }
        checked.results.push_back(
            Compare(shared, std::move(*file.summary), inOrder, options.alpha));
        checked.results.back().newName = file.name;
    }
    return checked;
}

}  // namespace app
