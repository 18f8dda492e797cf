#include "app/sql/LearnedColumns.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <utility>

#include "accredit/diststats/MACutPoints.h"
#include "accredit/documents/NumberText.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/data/CellText.h"

using MADocuments::MissingTokens;
using MADocuments::TrimBlanks;

namespace app {

void RequireDifferentNames(const std::vector<ResultColumn>& sources, const ColumnChoices& choices,
                           const std::string& tableName) {
    const std::set<std::string> ignored(choices.ignored.begin(), choices.ignored.end());
    std::set<std::string> known;
    for (const ResultColumn& column : sources) {
        if (ignored.count(column.name) != 0 || known.insert(column.name).second) continue;
        throw InputError(
            fmt::format("{}: the column \"{}\" stands twice; AS gives one of them "
                        "another name",
                        tableName, Shortened(column.name)));
    }
}

bool IsOpen(Choice choice, const AnsweredColumn& column, bool hasTexts) {
    return choice != Choice::Ignored && column.problem.empty() &&
           (column.storage == Storage::Text || (column.storage == Storage::Any && hasTexts));
}

void SettleByType(Choice choice, const ResultColumn& source, bool hasTexts, AnsweredColumn& column,
                  SettledColumn& settled) {
    settled.isChosen = choice != Choice::None;
    if (choice == Choice::Ignored) {
        settled.leftOut = LeftOut::Ignored;
        return;
    }
    ColumnKind& kind = column.column.kind;
    const bool isCategorical = choice == Choice::Categorical;
    switch (source.storage) {
        case Storage::Double:
        case Storage::Number:
            kind = isCategorical ? ColumnKind::NumberCategory : ColumnKind::Continuous;
            break;
        case Storage::Boolean:
            kind = choice == Choice::Continuous ? ColumnKind::Continuous : ColumnKind::TextCategory;
            break;
        case Storage::Date:
            kind = ColumnKind::TextCategory;
            if (isCategorical) break;
            column.problem = fmt::format(
                "holds dates, the type is \"{}\", of which new data has others; {} leaves it "
                "out, {} takes them as categories",
                Printable(source.type), ShellOption("--ignore", source.name),
                ShellOption("--categorical", source.name));
            break;
        case Storage::Other:
            kind = ColumnKind::TextCategory;
            column.problem = WrongType(source.storage, source.type, column.column);
            break;
        case Storage::Any:
            if (hasTexts) break;
            kind = isCategorical ? ColumnKind::NumberCategory : ColumnKind::Continuous;
            break;
        case Storage::Text:
            break;
    }
}

std::string TooManyTexts(const Column& column) {
    Column categories = column;
    categories.kind = ColumnKind::TextCategory;
    return TooManyCategories(categories) +
           "; if these are numbers, --query 'SELECT CAST(...)' makes them such";
}

bool SettleByTexts(Choice choice, std::uint64_t numbers, const MissingTokens& missing,
                   AnsweredColumn& column, SettledColumn& settled) {
    ColumnScan scan(MaxCategories());
    std::uint64_t distinct = 0;
    for (const Group& group : column.answer.groups) {
        const std::string_view text = TrimBlanks(group.key.text);
        if (missing.Contains(text)) continue;
        ++distinct;
        scan.TakeGroup(group.key.text, ParseCell(text, false), group.count);
    }
    settled.facts = scan.Facts();
    settled.facts.distinct = distinct;
    settled.facts.distinctIsExact = true;
    settled.facts.present += numbers;
    const std::string name = column.column.name;
    if (choice == Choice::Continuous && settled.facts.noNumbers > 0) {
        const std::string& text = settled.facts.firstNoNumber.text;
        column.problem = fmt::format("{}; {} reads it as a missing value", NotANumber(text),
                                     ShellOption("--missing", text, "TOKEN"));
        return false;
    }
    if (!SettleByFacts(choice, settled)) {
        column.problem = fmt::format(
            "has numbers as spreadsheets show them, such as \"{}\"; {} takes "
            "the column as categories",
            Shortened(settled.facts.firstSpreadsheetNumber.text),
            ShellOption("--categorical", name));
        return false;
    }
    column.column.kind = settled.column.kind;
    settled.column.name = name;
    if (settled.leftOut == LeftOut::Dates) {
        column.problem = fmt::format(
            "holds dates, of which new data has others; {} leaves it out, {} "
            "takes them as categories",
            ShellOption("--ignore", name), ShellOption("--categorical", name));
        return false;
    }
    return column.column.kind != ColumnKind::Continuous &&
           column.column.kind != ColumnKind::Ignored && numbers > 0;
}

void ComputeCutPoints(std::vector<AnsweredColumn>& columns, std::uint64_t rows,
                      const MissingTokens& missing) {
    for (AnsweredColumn& each : columns) {
        if (each.column.kind != ColumnKind::Continuous) continue;
        const NumberFigures figures(each.answer, rows, missing);
        const double s = figures.Deviation();
        each.cutPoints = MAComputeCutPoints(figures.Mean(), s);
        if (each.cutPoints.empty()) continue;
        const auto disorder =
            std::adjacent_find(each.cutPoints.begin(), each.cutPoints.end(),
                               [](double left, double right) { return !(left < right); });
        if (disorder == each.cutPoints.end() && std::isfinite(s)) continue;
        each.problem = fmt::format("{}; {} leaves it out",
                                   std::isfinite(s)
                                       ? "has values that vary too little for their size to be put "
                                         "into bins"
                                       : "has values so large that their deviation overflows",
                                   ShellOption("--ignore", each.column.name));
    }
}

void RequireNoProblems(const std::vector<AnsweredColumn>& columns, const std::string& tableName) {
    std::string problems;
    for (const AnsweredColumn& each : columns) {
        if (each.problem.empty()) continue;
        problems += fmt::format("{}{}: the column \"{}\" {}",
                                problems.empty() ? "" : "\naccredit: ", tableName,
                                Shortened(each.column.name), each.problem);
    }
    if (!problems.empty()) throw InputError(problems);
}

void RequireColumnsLeft(const std::vector<AnsweredColumn>& columns, const std::string& tableName) {
    const bool isAnyLeft = std::any_of(
        columns.begin(), columns.end(),
        [](const AnsweredColumn& each) { return each.column.kind != ColumnKind::Ignored; });
    if (isAnyLeft) return;
    throw InputError(tableName +
                     ": every column is left out, because it is ignored or its values are keys; "
                     "--categorical COLUMN takes one as categories");
}

void RequireRows(std::uint64_t rows, const std::string& tableName) {
    if (rows == 0) throw InputError(tableName + ": there are no rows to learn from");
}

LearnedReference ReferenceOf(const std::vector<AnsweredColumn>& columns,
                             std::vector<SettledColumn> settled, std::uint64_t rows,
                             const MissingTokens& missing, const std::string& tableName) {
    LearnedReference learned;
    learned.reference = SummaryOf(columns, rows, missing, tableName);
    unsigned int slot = 0;
    for (std::size_t i = 0; i < settled.size(); ++i) {
        settled[i].column = columns[i].column;
        if (columns[i].column.kind == ColumnKind::Ignored) continue;
        // Of types that have no texts nothing was settled by the values.
        ColumnFacts& facts = settled[i].facts;
        if (facts.present == 0) {
            facts.present = learned.reference.stats.GetNumberOfCases(slot);
            if (columns[i].column.kind == ColumnKind::TextCategory) {
                facts.noNumbers = facts.present;
                facts.allNoNumbersAreOneText = false;
                facts.distinct = learned.reference.stats.GetFrequencies(slot).size();
            }
        }
        ++slot;
    }
    learned.data.columns = std::move(settled);
    return learned;
}

}  // namespace app
