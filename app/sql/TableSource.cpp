#include "app/sql/TableSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "accredit/documents/NewRecords.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/sql/LearnedColumns.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;

namespace app {

namespace {

// A class of SQLSTATE: a value that an expression cannot take, such as one that overflows.
constexpr const char* kDataException = "22";

// What a column is asked by.
struct AskedColumn {
    std::string quoted;  // its name
    std::string type;    // as the engine calls it
    std::string value;   // its numbers as doubles; empty if there are none
    std::string texts;   // the condition for what is grouped beside them
    // Of SQLite's columns, the values of each type.
    std::uint64_t textCount = 0;
    std::uint64_t integerCount = 0;
    std::uint64_t numberCount = 0;
    std::string problem = {};
};

// The columns that are summarised, and what they are asked by.
class Summariser {
public:
    Summariser(TableQueries& table, const MissingTokens& missing)
        : mTable(table), mMissing(NumbersAmong(missing)) {}

    void Add(const Column& column, const ResultColumn& source, std::vector<double> cutPoints) {
        AnsweredColumn answered;
        answered.column = column;
        answered.storage = source.storage;
        answered.cutPoints = std::move(cutPoints);
        columns.push_back(std::move(answered));
        asked.push_back({mTable.GetDialect().Column(source.name), source.type, "", ""});
    }

    void ExpectQueries();
    void FindTypes();
    void SettleNumbers(std::size_t i);
    bool AskCategories(std::size_t i);
    bool AskTexts(std::size_t i);
    void AskNumbers();
    void AskMoments();
    void AskBins();

    std::vector<AnsweredColumn> columns;
    std::vector<AskedColumn> asked;

private:
    bool HasTexts(std::size_t i) const;
    bool HasNumbers(std::size_t i) const {
        return columns[i].column.kind == ColumnKind::Continuous && columns[i].problem.empty() &&
               !asked[i].value.empty();
    }
    std::vector<ColumnAnswer> Answers() const { return std::vector<ColumnAnswer>(columns.size()); }
    void AskSums(bool all);
    void AskDeviations();
    void RequireSameCount(std::size_t i, const ColumnAnswer& answer) const;

    TableQueries& mTable;
    std::vector<double> mMissing;  // numbers that stand for a missing value
};

bool Summariser::HasTexts(std::size_t i) const {
    return columns[i].storage == Storage::Text ||
           (columns[i].storage == Storage::Any && asked[i].textCount > 0);
}

// Columns of texts whose kind is not known yet, and have no bins of their own, are taken as either.
void Summariser::ExpectQueries() {
    constexpr std::size_t kCounts = 4;
    constexpr std::size_t kDeviations = 3;
    std::size_t counts = 0;
    std::size_t deviations = 0;
    std::size_t groups = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bool isCategory = columns[i].column.kind == ColumnKind::TextCategory ||
                                columns[i].column.kind == ColumnKind::NumberCategory;
        if (!columns[i].problem.empty()) continue;
        if (isCategory || HasTexts(i)) groups += 2;
        if (columns[i].column.kind != ColumnKind::Continuous) continue;
        counts += kCounts + columns[i].cutPoints.size();
        deviations += kDeviations;
    }
    mTable.Expect(groups + TableQueries::QueriesFor(counts) +
                  (deviations > 0 ? TableQueries::QueriesFor(deviations) : 0));
}

// A column of SQLite holds whatever was put in, so it is asked what that is.
void Summariser::FindTypes() {
    const Dialect& dialect = mTable.GetDialect();
    std::vector<Question> questions;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].storage != Storage::Any || !columns[i].problem.empty()) continue;
        const std::string& quoted = asked[i].quoted;
        questions.push_back({3 * i, Part::Count, 0, {fmt::format("COUNT({})", quoted)}});
        for (const auto& [column, type] : {std::pair{3 * i + 1, "integer"}, {3 * i + 2, "real"}}) {
            questions.push_back(
                {column,
                 Part::Count,
                 0,
                 {dialect.CountIf(fmt::format("typeof({}) = '{}'", quoted, type))}});
        }
    }
    if (questions.empty()) return;
    std::vector<ColumnAnswer> answers(3 * columns.size());
    mTable.Ask(questions, answers);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        asked[i].integerCount = answers[3 * i + 1].count;
        asked[i].numberCount = asked[i].integerCount + answers[3 * i + 2].count;
        asked[i].textCount = answers[3 * i].count - asked[i].numberCount;
    }
}

// How the numbers of a column are asked for, and what else there is.
void Summariser::SettleNumbers(std::size_t i) {
    const Dialect& dialect = mTable.GetDialect();
    AskedColumn& how = asked[i];
    switch (columns[i].storage) {
        case Storage::Text:
            how.value.clear();
            break;
        case Storage::Any:
            if (how.textCount == 0) {
                how.value = dialect.AsDoubleOf(how.quoted, how.integerCount > 0);
            } else if (how.numberCount > 0) {
                how.value = dialect.AsDouble(how.quoted, Storage::Any);
                how.texts = dialect.IsText(how.quoted);
            }
            break;
        default:
            how.value = dialect.AsDouble(how.quoted, columns[i].storage);
    }
    if (!how.value.empty()) how.value = dialect.Without(how.value, mMissing);
}

bool Summariser::AskCategories(std::size_t i) {
    const Dialect& dialect = mTable.GetDialect();
    const Storage storage = columns[i].storage;
    const bool isNumber =
        storage == Storage::Double || storage == Storage::Number || storage == Storage::Boolean;
    const std::string& quoted = asked[i].quoted;
    if (columns[i].column.kind == ColumnKind::NumberCategory && isNumber) {
        return mTable.AskGroups(dialect.AsDouble(quoted, storage), Storage::Double, "",
                                columns[i].answer);
    }
    return mTable.AskGroups(dialect.AsKey(quoted, storage, mTable.HasNodes()), storage, "",
                            columns[i].answer);
}

// The texts of a column of numbers, if it has any.
bool Summariser::AskTexts(std::size_t i) {
    return !HasTexts(i) ||
           mTable.AskGroups(
               mTable.GetDialect().AsKey(asked[i].quoted, columns[i].storage, mTable.HasNodes()),
               columns[i].storage, asked[i].texts, columns[i].answer);
}

void Summariser::AskNumbers() {
    const Dialect& dialect = mTable.GetDialect();
    std::vector<Question> counts;
    std::vector<Question> withSums;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!HasNumbers(i)) continue;
        for (Question& question :
             CountQuestions(dialect, i, asked[i].value, columns[i].cutPoints)) {
            withSums.push_back(question);
            counts.push_back(std::move(question));
        }
        withSums.push_back(SumQuestion(dialect, i, asked[i].value, {}));
    }
    const auto ask = [&](const std::vector<Question>& questions) {
        std::vector<ColumnAnswer> answers = Answers();
        mTable.Ask(questions, answers);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            answers[i].groups = std::move(columns[i].answer.groups);
            columns[i].answer = std::move(answers[i]);
        }
    };
    try {
        ask(withSums);
    } catch (const SqlError& error) {
        if (error.State().compare(0, 2, kDataException) != 0) throw;
        // A sum that leaves the range of doubles is asked for again, with a scale.
        ask(counts);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (HasNumbers(i)) columns[i].answer.sum = std::numeric_limits<double>::infinity();
        }
    }
}

// Sums with a scale, of all columns of numbers or of those that need it.
void Summariser::AskSums(bool all) {
    std::vector<Question> questions;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!HasNumbers(i)) continue;
        ColumnAnswer& answer = columns[i].answer;
        const NumberFigures figures(answer, mTable.Rows(), MissingTokens());
        if (answer.count == 0 || !(all || figures.NeedsScale())) continue;
        answer.scale = ScaleFor(figures.Minimum(), figures.Maximum());
        questions.push_back(SumQuestion(mTable.GetDialect(), i, asked[i].value, answer.scale));
    }
    if (questions.empty()) return;
    std::vector<ColumnAnswer> answers = Answers();
    mTable.Ask(questions, answers);
    for (const Question& question : questions) {
        columns[question.column].answer.sum = answers[question.column].sum;
    }
}

void Summariser::AskDeviations() {
    std::vector<Question> questions;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].column.kind != ColumnKind::Continuous || !columns[i].problem.empty()) {
            continue;
        }
        ColumnAnswer& answer = columns[i].answer;
        answer.center = NumberFigures(answer, mTable.Rows(), MissingTokens()).Center();
        if (!HasNumbers(i) || answer.count == 0) continue;
        for (Question& question : DeviationQuestions(mTable.GetDialect(), i, asked[i].value,
                                                     answer.center, answer.scale)) {
            questions.push_back(std::move(question));
        }
    }
    if (questions.empty()) return;
    std::vector<ColumnAnswer> answers = Answers();
    mTable.Ask(questions, answers);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!HasNumbers(i) || columns[i].answer.count == 0) continue;
        RequireSameCount(i, answers[i]);
        columns[i].answer.deviation = answers[i].deviation;
        columns[i].answer.square = answers[i].square;
    }
}

void Summariser::RequireSameCount(std::size_t i, const ColumnAnswer& answer) const {
    if (answer.count != columns[i].answer.count) RefuseChangedTable(mTable.Name());
}

void Summariser::AskMoments() {
    AskSums(false);
    try {
        AskDeviations();
        const bool isFinite =
            std::all_of(columns.begin(), columns.end(), [](const AnsweredColumn& each) {
                return std::isfinite(each.answer.square) && std::isfinite(each.answer.deviation);
            });
        if (isFinite) return;
    } catch (const SqlError& error) {
        if (error.State().compare(0, 2, kDataException) != 0) throw;
    }
    // Squares that leave the range of doubles, or vanish in it, need the scale, too.
    AskSums(true);
    AskDeviations();
}

// The cases up to the cut points, which were not known when the others were counted.
void Summariser::AskBins() {
    std::vector<Question> questions;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!HasNumbers(i) || columns[i].cutPoints.empty()) continue;
        questions.push_back({i, Part::Count, 0, {fmt::format("COUNT({})", asked[i].value)}});
        for (std::size_t k = 0; k < columns[i].cutPoints.size(); ++k) {
            questions.push_back(
                {i, Part::AtMost, k,
                 mTable.GetDialect().CountAtMost(asked[i].value, columns[i].cutPoints[k])});
        }
    }
    if (questions.empty()) return;
    std::vector<ColumnAnswer> answers = Answers();
    mTable.Ask(questions, answers);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!HasNumbers(i) || columns[i].cutPoints.empty()) continue;
        RequireSameCount(i, answers[i]);
        columns[i].answer.atMost = std::move(answers[i].atMost);
    }
}

// The table's column of this name, which may stand there only once; nothing if there is none. A
// name that differs in capitals only will do if it is no other variable's.
std::optional<std::size_t> FindColumn(const TableQueries& table, const std::string& name,
                                      const std::set<std::string>& taken) {
    std::vector<std::size_t> same;
    std::vector<std::size_t> similar;
    const std::vector<ResultColumn>& columns = table.Columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].name == name) same.push_back(i);
        if (Lower(columns[i].name) == Lower(name) && taken.count(columns[i].name) == 0) {
            similar.push_back(i);
        }
    }
    if (same.size() > 1) {
        throw InputError(
            fmt::format("{}: the column \"{}\" stands twice; AS gives one of them "
                        "another name",
                        table.Name(), Shortened(name)));
    }
    if (!same.empty()) return same.front();
    if (similar.size() == 1) return similar.front();
    return std::nullopt;
}

}  // namespace

TableSummary SummariseTable(const Reference& reference, TableQueries& table) {
    const MCMTD_NAMESPACE::MCVarList& list = reference.stats.GetVarList();
    std::vector<std::string> names;
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        names.push_back(MADocuments::VariableName(reference.stats, slot));
    }
    const std::set<std::string> taken(names.begin(), names.end());
    const std::vector<Column> like = ColumnsLike(list, names);
    const std::vector<std::vector<double>> cutPoints =
        MADocuments::UsableCutPoints(reference.stats);

    TableSummary made;
    Summariser summariser(table, reference.missing);
    for (std::size_t slot = 0; slot < names.size(); ++slot) {
        const std::optional<std::size_t> found = FindColumn(table, names[slot], taken);
        if (!found) continue;
        const ResultColumn& source = table.Columns()[*found];
        if (source.name != names[slot]) {
            made.remarks.push_back(fmt::format(R"({}: the column "{}" is taken for "{}")",
                                               table.Name(), Shortened(source.name),
                                               Shortened(names[slot])));
        }
        summariser.Add(like[slot], source, cutPoints[slot]);
        summariser.columns.back().problem = WrongType(source.storage, source.type, like[slot]);
    }
    summariser.ExpectQueries();
    summariser.FindTypes();
    for (std::size_t i = 0; i < summariser.columns.size(); ++i) {
        if (summariser.columns[i].column.kind == ColumnKind::Continuous &&
            summariser.columns[i].problem.empty()) {
            summariser.SettleNumbers(i);
        }
    }
    summariser.ExpectQueries();
    summariser.AskNumbers();
    for (std::size_t i = 0; i < summariser.columns.size(); ++i) {
        AnsweredColumn& each = summariser.columns[i];
        if (!each.problem.empty()) continue;
        const bool isAnswered = each.column.kind == ColumnKind::Continuous
                                    ? summariser.AskTexts(i)
                                    : summariser.AskCategories(i);
        if (!isAnswered) each.problem = TooManyCategories(each.column);
    }
    FindProblems(summariser.columns, reference.missing);
    summariser.AskMoments();
    made.summary = SummaryLike(reference, summariser.columns, table.Rows(), table.Name());
    made.untested = UntestedColumns(summariser.columns);
    return made;
}

namespace {

// The columns of a table that a reference is learned from.
class Learner {
public:
    Learner(TableQueries& table, const ColumnChoices& choices, const MissingTokens& missing)
        : mTable(table), mMissing(missing), mSummariser(table, missing) {
        RequireDifferentNames(table.Columns(), choices, table.Name());
        mChoices = ChoicesByColumn(NamesOf(table.Columns()), choices);
        const std::vector<ResultColumn>& sources = table.Columns();
        for (std::size_t i = 0; i < sources.size(); ++i) {
            // What tells the shards apart is no property of the data.
            if (sources[i].name == table.ShardBy() && mChoices[i] == Choice::None) {
                mChoices[i] = Choice::Ignored;
            }
            Column column;
            column.name = sources[i].name;
            mSettled.emplace_back().column = column;
            mSummariser.Add(column, sources[i], {});
        }
    }

    LearnedReference Learn();

private:
    void SettleTexts();
    void RequireNoProblems() const { app::RequireNoProblems(mSummariser.columns, mTable.Name()); }
    bool HasTexts(std::size_t i) const { return mSummariser.asked[i].textCount > 0; }
    bool IsOpen(std::size_t i) const {
        return app::IsOpen(mChoices[i], mSummariser.columns[i], HasTexts(i));
    }
    std::string& Problem(std::size_t i) { return mSummariser.columns[i].problem; }

    TableQueries& mTable;
    const MissingTokens& mMissing;
    Summariser mSummariser;
    std::vector<Choice> mChoices;
    std::vector<SettledColumn> mSettled;
};

void Learner::SettleTexts() {
    for (std::size_t i = 0; i < mChoices.size(); ++i) {
        if (!IsOpen(i)) continue;
        AnsweredColumn& each = mSummariser.columns[i];
        AskedColumn& how = mSummariser.asked[i];
        if (each.storage == Storage::Any && how.numberCount > 0) {
            how.texts = mTable.GetDialect().IsText(how.quoted);
        }
        if (!mSummariser.AskTexts(i)) {
            Problem(i) = TooManyTexts(each.column);
        } else if (SettleByTexts(mChoices[i], how.numberCount, mMissing, each, mSettled[i])) {
            each.answer.groups.clear();
            if (!mSummariser.AskCategories(i)) Problem(i) = TooManyCategories(each.column);
        }
    }
}

LearnedReference Learner::Learn() {
    for (std::size_t i = 0; i < mChoices.size(); ++i) {
        if (mChoices[i] == Choice::Ignored) mSummariser.columns[i].storage = Storage::Other;
    }
    mSummariser.ExpectQueries();
    mSummariser.FindTypes();
    for (std::size_t i = 0; i < mChoices.size(); ++i) {
        SettleByType(mChoices[i], mTable.Columns()[i], HasTexts(i), mSummariser.columns[i],
                     mSettled[i]);
    }
    RequireNoProblems();
    mSummariser.ExpectQueries();
    for (std::size_t i = 0; i < mChoices.size(); ++i) {
        const ColumnKind kind = mSummariser.columns[i].column.kind;
        if (kind == ColumnKind::TextCategory || kind == ColumnKind::NumberCategory) {
            if (!mSummariser.AskCategories(i)) {
                Problem(i) = TooManyCategories(mSummariser.columns[i].column);
            }
        }
    }
    SettleTexts();
    for (std::size_t i = 0; i < mChoices.size(); ++i) {
        if (mSummariser.columns[i].column.kind == ColumnKind::Continuous) {
            mSummariser.SettleNumbers(i);
        }
    }
    RequireNoProblems();
    mSummariser.AskNumbers();
    RequireRows(mTable.Rows(), mTable.Name());
    RequireColumnsLeft(mSummariser.columns, mTable.Name());
    FindProblems(mSummariser.columns, mMissing);
    RequireNoProblems();
    mSummariser.AskMoments();
    ComputeCutPoints(mSummariser.columns, mTable.Rows(), mMissing);
    RequireNoProblems();
    mTable.Expect(1);
    mSummariser.AskBins();

    return ReferenceOf(mSummariser.columns, std::move(mSettled), mTable.Rows(), mMissing,
                       mTable.Name());
}

}  // namespace

LearnedReference LearnTable(TableQueries& table, const ColumnChoices& choices,
                            const MissingTokens& missing) {
    return Learner(table, choices, missing).Learn();
}

}  // namespace app
