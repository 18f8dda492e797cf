#include "app/sql/AnsweredTable.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

#include "accredit/documents/NewRecords.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/sql/LearnedColumns.h"

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
        column.missing = NumbersAmong(reference.missing);
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
    names.reserve(asked.size());
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

namespace {

// What is asked of a column of which the type is known.
StatementColumn ColumnToLearn(const ResultColumn& source, Choice choice,
                              const std::vector<double>& missing) {
    using Groups = StatementColumn::Groups;
    StatementColumn column;
    column.name = source.name;
    column.missing = missing;
    column.storage = source.storage;
    if (choice == Choice::Ignored) return column;
    const bool isCategorical = choice == Choice::Categorical;
    switch (source.storage) {
        case Storage::Double:
        case Storage::Number:
            column.hasNumbers = !isCategorical;
            break;
        case Storage::Boolean:
            column.hasNumbers = choice == Choice::Continuous;
            break;
        case Storage::Any:
            column.hasNumbers = true;
            column.groups =
                isCategorical ? Groups::TextsAndNumbers : Groups::NumbersOnlyBesideTexts;
            break;
        default:
            break;
    }
    column.hasMoments = column.hasNumbers;
    if (!column.hasNumbers) column.groups = Groups::All;
    return column;
}

}  // namespace

LearningRounds::LearningRounds(const ColumnChoices& choices, const MissingTokens& missing)
    : mChoices(choices), mMissing(missing) {}

void LearningRounds::Take(const Answers& answers) {
    mName = SourceName(answers.head.source);
    switch (mAnswered++) {
        case 0:
            TakeColumns(answers);
            break;
        case 1:
            TakeValues(answers);
            break;
        default:
            TakeBins(answers);
    }
}

std::string LearningRounds::Statement(const StatementHead& head) const {
    return mAnswered == 0 ? WriteColumnsStatement(head) : WriteStatement(head, mAsked);
}

void LearningRounds::TakeColumns(const Answers& answers) {
    mSources = app::TakeColumns(answers);
    RequireDifferentNames(mSources, mChoices, mName);
    mByColumn = ChoicesByColumn(app::NamesOf(mSources), mChoices);
    mColumns.resize(mSources.size());
    mSettled.resize(mSources.size());
    for (std::size_t i = 0; i < mSources.size(); ++i) {
        mColumns[i].column.name = mSources[i].name;
        mColumns[i].storage = mSources[i].storage;
        mSettled[i].column = mColumns[i].column;
        // Of columns of any type it is settled when it is known what they hold.
        if (mSources[i].storage != Storage::Any || mByColumn[i] == Choice::Ignored) {
            SettleByType(mByColumn[i], mSources[i], false, mColumns[i], mSettled[i]);
        }
        mAsked.push_back(ColumnToLearn(mSources[i], mByColumn[i], NumbersAmong(mMissing)));
    }
    RequireNoProblems(mColumns, mName);
}

void LearningRounds::TakeValues(const Answers& answers) {
    StatementAnswer taken = TakeAnswers(answers, mAsked);
    mRows = taken.rows;
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        if (mByColumn[i] == Choice::Ignored) continue;
        AnsweredColumn& each = mColumns[i];
        AnsweredType& type = taken.types[i];
        const bool hasTexts = type.texts > 0;
        if (each.storage == Storage::Any) {
            SettleByType(mByColumn[i], mSources[i], hasTexts, each, mSettled[i]);
        }
        TakeColumn(taken, i, mMissing, each);
        bool areNumbersCategories = each.column.kind == ColumnKind::NumberCategory;
        if (IsOpen(mByColumn[i], each, hasTexts)) {
            areNumbersCategories =
                SettleByTexts(mByColumn[i], each.answer.count, mMissing, each, mSettled[i]);
        } else if (type.hasTooManyGroups && each.storage == Storage::Text) {
            each.problem = TooManyTexts(each.column);
        }
        if (each.storage != Storage::Any || each.column.kind == ColumnKind::Continuous) continue;
        if (areNumbersCategories && type.hasTooManyNumbers) {
            each.problem = TooManyCategories(each.column);
        }
        if (areNumbersCategories) {
            each.answer.groups.insert(each.answer.groups.end(), type.numbers.begin(),
                                      type.numbers.end());
        }
        each.answer.count = 0;
    }
    RequireNoProblems(mColumns, mName);
    RequireRows(mRows, mName);
    RequireColumnsLeft(mColumns, mName);
    FindProblems(mColumns, mMissing);
    RequireNoProblems(mColumns, mName);
    ComputeCutPoints(mColumns, mRows, mMissing);
    RequireNoProblems(mColumns, mName);
    AskBins();
}

void LearningRounds::AskBins() {
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        StatementColumn asked;
        asked.name = mSources[i].name;
        asked.storage = mSources[i].storage;
        asked.missing = NumbersAmong(mMissing);
        asked.hasNumbers = mColumns[i].answer.count > 0 && !mColumns[i].cutPoints.empty();
        if (asked.hasNumbers) asked.cutPoints = mColumns[i].cutPoints;
        mAsked[i] = std::move(asked);
    }
}

void LearningRounds::TakeBins(const Answers& answers) {
    StatementAnswer taken = TakeAnswers(answers, mAsked);
    if (taken.rows != mRows) RefuseChangedTable(mName);
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        if (!mAsked[i].hasNumbers) continue;
        if (taken.columns[i].count != mColumns[i].answer.count) RefuseChangedTable(mName);
        mColumns[i].answer.atMost = std::move(taken.columns[i].atMost);
    }
}

LearnedReference LearningRounds::Learned() {
    return ReferenceOf(mColumns, std::move(mSettled), mRows, mMissing, mName);
}

}  // namespace app
