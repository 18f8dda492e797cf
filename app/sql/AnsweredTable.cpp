#include "app/sql/AnsweredTable.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

#include "accredit/documents/NewRecords.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;

namespace app {

namespace {

// Puts what was answered of a column to it.
void TakeColumn(StatementAnswer& taken, std::size_t i, const MissingTokens& missing,
                AnsweredColumn& each) {
    const AnsweredType& type = taken.types[i];
    each.answer = std::move(taken.columns[i]);
    if (type.storage) each.storage = *type.storage;
    // Where no number was counted, none is near the mean of those that texts spell.
    if (each.answer.count == 0) {
        each.answer.center = NumberFigures(each.answer, taken.rows, missing).Center();
    }
    if (type.hasTooManyGroups) each.problem = TooManyCategories(each.column);
}

}  // namespace

std::vector<StatementColumn> ColumnsToCheck(const Reference& reference) {
    const std::vector<std::vector<double>> cutPoints =
        MADocuments::UsableCutPoints(reference.stats);
    std::vector<StatementColumn> columns;
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        StatementColumn column;
        column.name = MADocuments::VariableName(reference.stats, slot);
        column.hasNumbers = !reference.stats.IsCategorical(slot);
        column.hasMoments = column.hasNumbers;
        column.cutPoints = cutPoints[slot];
        column.groups =
            column.hasNumbers ? StatementColumn::Groups::Texts : StatementColumn::Groups::All;
        columns.push_back(std::move(column));
    }
    return columns;
}

TableSummary SummariseAnswers(const Reference& reference, const Answers& answers) {
    const std::vector<StatementColumn> asked = ColumnsToCheck(reference);
    StatementAnswer taken = TakeAnswers(answers, asked);
    std::vector<std::string> names;
    for (const StatementColumn& column : asked) names.push_back(column.name);
    const std::vector<Column> like = ColumnsLike(reference.stats.GetVarList(), names);
    std::vector<AnsweredColumn> columns(asked.size());
    for (std::size_t i = 0; i < asked.size(); ++i) {
        columns[i].column = like[i];
        columns[i].cutPoints = asked[i].cutPoints;
        TakeColumn(taken, i, reference.missing, columns[i]);
        if (!columns[i].problem.empty()) continue;
        columns[i].problem = WrongType(columns[i].storage, "date", like[i]);
        const bool isText =
            columns[i].storage == Storage::Text && like[i].kind == ColumnKind::Continuous;
        if (isText && answers.head.engine == Dialect::Engine::ClickHouse) {
            columns[i].problem = fmt::format(
                "holds texts, where numbers belong; --query 'SELECT toFloat64OrNull(...)' makes "
                "numbers of them, and {} leaves it out",
                ShellOption("--ignore", like[i].name));
        }
    }
    FindProblems(columns, reference.missing);
    TableSummary made;
    made.summary = SummaryLike(reference, columns, taken.rows, SourceName(answers.head.source));
    made.untested = UntestedColumns(columns);
    return made;
}

}  // namespace app
