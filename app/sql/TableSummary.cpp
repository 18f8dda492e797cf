#include "app/sql/TableSummary.h"

#include <fmt/format.h>

#include <memory>
#include <numeric>
#include <utility>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/documents/NewRecords.h"
#include "accredit/host/IMCVariable.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCVariable.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"

using MADocuments::kMaxCategoryBytes;
using MADocuments::MissingTokens;
using MADocuments::Reference;
using MADocuments::UncountedData;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

bool IsSummarised(const AnsweredColumn& each) {
    return each.column.kind != ColumnKind::Ignored && each.problem.empty();
}

CategoryFigures CategoriesOf(const AnsweredColumn& each, const MissingTokens& missing) {
    CategoryFigures figures(each.answer, each.column.kind == ColumnKind::NumberCategory, missing);
    if (each.storage == Storage::Boolean && each.column.reference) {
        figures.SpellBooleansLike(*each.column.reference);
    }
    return figures;
}

// What one column adds to the summary, besides its variable.
struct Contribution {
    unsigned long cases;
    double minimum = MCMV::Missing();
    double maximum = MCMV::Missing();
    double mean = MCMV::Missing();
    double deviation = MCMV::Missing();
    std::vector<double> frequencies = {};
    UncountedData uncounted = {};
};

}  // namespace

std::uint64_t MaxCategories() { return kMaxCategoryBytes / MADocuments::kCategorySize; }

std::string TooManyCategories(const Column& column) {
    return column.kind == ColumnKind::Continuous
               ? "has too many different texts to be read as numbers one by one; --query 'SELECT "
                 "CAST(...)' makes numbers of them"
               : fmt::format("has too many different categories to be kept; {} leaves it out",
                             ShellOption("--ignore", column.name));
}

std::string WrongType(Storage storage, const std::string& type, const Column& column) {
    const bool isContinuous = column.kind == ColumnKind::Continuous;
    const std::string ignore = ShellOption("--ignore", column.name);
    if (storage == Storage::Date && isContinuous) {
        return fmt::format(
            "holds dates, the type is \"{}\", where numbers belong; {} leaves it out",
            Printable(type), ignore);
    }
    if (storage == Storage::Other) {
        return fmt::format(
            "is of the type \"{}\", which has neither numbers nor texts; {} leaves it "
            "out, and --query 'SELECT CAST(...)' makes something else of it",
            Printable(type), ignore);
    }
    return {};
}

void FindProblems(std::vector<AnsweredColumn>& columns, const MissingTokens& missing) {
    std::size_t bytes = 0;
    for (const AnsweredColumn& each : columns) {
        if (each.column.reference) bytes += MADocuments::CategoryBytes(*each.column.reference);
    }
    for (AnsweredColumn& each : columns) {
        if (!IsSummarised(each)) continue;
        if (HasBadNumbers(each.answer)) {
            each.problem = fmt::format(
                "holds NaN or an infinity, which is no number; --query 'SELECT ... WHERE' leaves "
                "such rows out, or {} the column",
                ShellOption("--ignore", each.column.name));
            continue;
        }
        if (each.column.kind == ColumnKind::Continuous) continue;
        const CategoryFigures figures = CategoriesOf(each, missing);
        if (figures.HasTooLargeNumbers()) {
            each.problem = fmt::format(
                "holds numbers of 2^53 and above, where several whole numbers are one double and "
                "would be one category; {} leaves it out",
                ShellOption("--ignore", each.column.name));
            continue;
        }
        const std::size_t more = figures.BytesWithout(each.column.reference);
        if (bytes + more > kMaxCategoryBytes) {
            each.problem = TooManyCategories(each.column);
        } else {
            bytes += more;
        }
    }
}

void RefuseChangedTable(const std::string& tableName) {
    throw InputError(tableName +
                     ": the table changed meanwhile, so the queries do not belong together; try "
                     "again when nothing writes to it, or on a copy");
}

Reference SummaryOf(const std::vector<AnsweredColumn>& columns, std::uint64_t rows,
                    const MissingTokens& missing, const std::string& tableName) {
    MCVarList list;
    std::vector<Contribution> parts;
    for (const AnsweredColumn& each : columns) {
        const Column& column = each.column;
        if (!IsSummarised(each)) {
            list.Add(MCVariable(column.name, IMCVariable::MeasureLevelContinuous,
                                IMCVariable::VariableRoleNone));
            continue;
        }
        Contribution part{};
        if (column.kind == ColumnKind::Continuous) {
            const NumberFigures figures(each.answer, rows, missing);
            if (figures.Count() + figures.Unreadable() > rows || !figures.IsConsistent()) {
                RefuseChangedTable(tableName);
            }
            part.cases = figures.Count();
            if (part.cases > 0) {
                part.minimum = figures.Minimum();
                part.maximum = figures.Maximum();
                part.mean = figures.Mean();
                part.deviation = figures.Deviation();
                // A reference has no bins where the squares of its deviations vanished; so do those
                // of new data in a pass over the values.
                if (each.cutPoints.empty() && part.deviation * part.deviation == 0.0) {
                    part.deviation = 0.0;
                }
            }
            if (!each.cutPoints.empty()) part.frequencies = figures.Bins(each.cutPoints);
            part.uncounted.unreadable = figures.Unreadable();
            part.uncounted.missing = figures.Missing();
            list.Add(MCVariable::Continuous(column.name));
        } else {
            const CategoryFigures figures = CategoriesOf(each, missing);
            if (figures.Count() + figures.Unreadable() > rows) RefuseChangedTable(tableName);
            part.cases = figures.Count();
            part.frequencies = figures.Frequencies();
            if (column.kind == ColumnKind::NumberCategory) {
                part.uncounted.unreadable = figures.Unreadable();
            }
            part.uncounted.missing = figures.Missing(rows);
            const std::shared_ptr<IMCEncoder> encoder = figures.Encoder();
            list.AddShared(std::make_shared<MCVariable>(column.name, column.measureLevel,
                                                        IMCVariable::VariableRoleInput,
                                                        encoder->GetNumCategories()),
                           encoder);
        }
        parts.push_back(std::move(part));
    }
    Reference summary;
    summary.missing = missing;
    if (parts.empty()) return summary;
    auto stats = std::make_unique<MADistStatsImp>(list, nullptr);
    std::size_t position = 0;
    for (unsigned int slot = 0; slot < parts.size(); ++slot, ++position) {
        while (!IsSummarised(columns[position])) ++position;
        const Contribution& part = parts[slot];
        const bool isTaken =
            stats->SetSummStats(slot, part.cases, part.minimum, part.maximum, part.mean,
                                part.deviation) &&
            (columns[position].column.kind == ColumnKind::Continuous
                 ? stats->SetFreqs(slot, part.frequencies, columns[position].cutPoints)
                 : stats->SetFreqs(slot, part.frequencies));
        if (!isTaken) RefuseChangedTable(tableName);
        summary.uncounted.push_back(part.uncounted);
    }
    summary.stats = MADistStats(stats.release());
    return summary;
}

Reference SummaryLike(const Reference& reference, const std::vector<AnsweredColumn>& columns,
                      std::uint64_t rows, const std::string& tableName) {
    Reference summary = SummaryOf(columns, rows, reference.missing, tableName);
    summary.namesMissing = reference.namesMissing ||
                           MADocuments::FindMissingCategory(summary.stats, summary.missing) < 0;
    return summary;
}

std::vector<UntestedColumn> UntestedColumns(const std::vector<AnsweredColumn>& columns) {
    std::vector<UntestedColumn> untested;
    for (const AnsweredColumn& each : columns) {
        if (!each.problem.empty()) untested.push_back({each.column.name, each.problem});
    }
    return untested;
}

}  // namespace app
