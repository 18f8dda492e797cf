#include "app/commands/Account.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "accredit/documents/NumberText.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/commands/Comparison.h"
#include "app/commands/TextTable.h"
#include "app/commands/Words.h"
#include "app/data/CellText.h"

using MADocuments::Reference;
using MADocuments::UncountedData;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

// Of more columns with few values only so many are named.
constexpr std::size_t kMaxNamed = 10;
// Fewer cases a value say nothing of how many values there are.
constexpr std::uint64_t kCasesToOneValue = 10;

std::string Plural(std::uint64_t count, const char* one, const char* many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

// So many different categories, and more than half of all values, may be keys.
constexpr std::uint64_t kFewKeys = 50;

// What stands in the table of one variable.
struct Taken {
    std::string kind;
    std::string values;
    std::string missing;
};

Taken TakenOf(const Reference& reference, unsigned int slot) {
    const MADistStats& stats = reference.stats;
    const UncountedData uncounted = UncountedAt(reference, slot);
    Taken taken;
    taken.missing = uncounted.missing ? fmt::format("{}", *uncounted.missing) : "-";
    if (stats.IsCategorical(slot)) {
        const IMCVariable* const variable =
            stats.GetVarList().GetVarAt(stats.GetVarListIndex(slot));
        taken.kind = "categories";
        taken.values = fmt::format("{} different", std::max(0, variable->GetNumCategories()));
        return taken;
    }
    double minimum = 0.0;
    double maximum = 0.0;
    stats.GetMinMax(slot, minimum, maximum);
    taken.kind = "numbers";
    taken.values = stats.GetNumberOfCases(slot) == 0
                       ? "none"
                       : fmt::format("{:.8g} to {:.8g}", minimum, maximum);
    return taken;
}

Taken TakenOf(LeftOut leftOut) {
    switch (leftOut) {
        case LeftOut::Keys:
            return {"left out", "keys", "-"};
        case LeftOut::Dates:
            return {"left out", "dates", "-"};
        default:
            return {"ignored", "-", "-"};
    }
}

std::string FewValues(const Learned& learned) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < learned.data.columns.size(); ++i) {
        const SettledColumn& settled = learned.data.columns[i];
        const ColumnFacts& facts = settled.facts;
        if (settled.column.kind == ColumnKind::Continuous && facts.wholeNumbers > 1 &&
            facts.wholeNumbers * kCasesToOneValue <= facts.present) {
            names.push_back(fmt::format("\"{}\"", ShownName(settled.column.name, i + 1)));
        }
    }
    if (names.empty()) return {};
    std::string words = names.front();
    for (std::size_t i = 1; i < std::min(names.size(), kMaxNamed); ++i) words += ", " + names[i];
    if (names.size() > kMaxNamed) {
        words += fmt::format(" and {} more", names.size() - kMaxNamed);
    }
    return words + (names.size() == 1 ? " has" : " have") +
           " few different whole numbers, which are taken as numbers; --categorical COLUMN makes "
           "them categories.";
}

std::string Place(const ShownCell& cell, bool isOneFile) {
    if (cell.line == 0) return fmt::format("\"{}\"", Shortened(cell.text));
    return fmt::format("\"{}\" on line {}{}", Shortened(cell.text), cell.line,
                       isOneFile ? std::string() : " of " + cell.file);
}

// "--missing 'x' reads them as missing values", if they are all the same.
std::string MissingRemedy(const ColumnFacts& facts) {
    if (!facts.allNoNumbersAreOneText) return "--missing TOKEN reads a text as a missing value";
    return fmt::format("{} reads {} as {}",
                       ShellOption("--missing", facts.firstNoNumber.text, "TOKEN"),
                       facts.noNumbers == 1 ? "it" : "them",
                       facts.noNumbers == 1 ? "a missing value" : "missing values");
}

// What most cells of a column look like that was not taken as that, and what to do; empty if
// nothing is to be said.
std::string MostCells(const SettledColumn& settled, bool isOneFile) {
    const ColumnFacts& facts = settled.facts;
    const std::uint64_t numbers = facts.present - facts.noNumbers;
    if (2 * facts.dates > facts.present) {
        return fmt::format("most cells are dates, of which new data has others; {} leaves it out",
                           ShellOption("--ignore", settled.column.name));
    }
    if (facts.spreadsheetNumbers > 0 && 2 * (numbers + facts.spreadsheetNumbers) > facts.present) {
        return fmt::format(
            "all cells except {} are numbers, or look so: the first one as spreadsheets show them "
            "is {}; export them as plain numbers{}",
            facts.noNumbers - facts.spreadsheetNumbers,
            Place(facts.firstSpreadsheetNumber, isOneFile),
            facts.decimalCommas == facts.spreadsheetNumbers ? ", or use --decimal-comma" : "");
    }
    // A single text among numbers stands for something that is not known.
    const bool isOneToken = facts.allNoNumbersAreOneText && 10 * numbers > facts.present;
    if (2 * numbers > facts.present || isOneToken) {
        return fmt::format("all cells except {} are numbers, the first other one {}; {}",
                           facts.noNumbers, Place(facts.firstNoNumber, isOneFile),
                           MissingRemedy(facts));
    }
    return {};
}

std::string RemarkOnCategories(const SettledColumn& settled, bool isOneFile) {
    const ColumnFacts& facts = settled.facts;
    const std::string most = MostCells(settled, isOneFile);
    const std::string categorical = ShellOption("--categorical", settled.column.name);
    const std::string distinct =
        fmt::format("{}{} different ones in {} cells", facts.distinctIsExact ? "" : "about ",
                    facts.distinct, facts.present);
    if (settled.leftOut == LeftOut::Keys && !most.empty()) {
        return "is left out, because its values are nearly all different, but " + most;
    }
    if (settled.leftOut == LeftOut::Keys) {
        return fmt::format(
            "is left out, because its values are keys, {}; {} takes them as categories", distinct,
            categorical);
    }
    if (!most.empty()) {
        return fmt::format("is taken as categories, but {}; {} says that these are categories",
                           most, categorical);
    }
    if (facts.distinct > kFewKeys && 2 * facts.distinct > facts.present) {
        return fmt::format("has categories that may be keys, {}; {} leaves it out", distinct,
                           ShellOption("--ignore", settled.column.name));
    }
    return {};
}

std::string RemarkOnNumbers(const SettledColumn& settled, bool isOneFile) {
    const ColumnFacts& facts = settled.facts;
    if (facts.noNumbers > 0) {
        return fmt::format(
            "has {} no number and unreadable, the first {}; {}, {} takes the column as categories",
            facts.noNumbers == 1 ? "1 cell that is"
                                 : fmt::format("{} cells that are", facts.noNumbers),
            Place(facts.firstNoNumber, isOneFile), MissingRemedy(facts),
            ShellOption("--categorical", settled.column.name));
    }
    if (facts.mayHaveThousands) {
        return "has three digits behind every point; if the points set thousands apart, export the "
               "numbers without them";
    }
    return {};
}

// What is to be said of a column; empty if nothing is.
std::string RemarkOn(const SettledColumn& settled, bool isOneFile) {
    switch (settled.leftOut) {
        case LeftOut::Ignored:
            return {};
        case LeftOut::Dates:
            return fmt::format(
                "is left out, because its values are dates, of which new data has others; {} "
                "takes them as categories",
                ShellOption("--categorical", settled.column.name));
        case LeftOut::Keys:
            return RemarkOnCategories(settled, isOneFile);
        case LeftOut::No:
            break;
    }
    if (settled.facts.present == 0) return "has no values, all are missing";
    if (settled.column.kind == ColumnKind::Continuous) return RemarkOnNumbers(settled, isOneFile);
    return settled.isChosen ? std::string() : RemarkOnCategories(settled, isOneFile);
}

// A row of data in the place of the headings: a heading that is a missing value, or a number other
// than a whole one, such as a year.
std::string HeadingsLikeData(const std::vector<SettledColumn>& columns) {
    const MADocuments::MissingTokens missing;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string& name = columns[i].column.name;
        const std::optional<double> number = MADocuments::ParseNumber(name);
        if (name.empty() ||
            !(missing.Contains(name) || (number && *number != std::trunc(*number)))) {
            continue;
        }
        return fmt::format(
            "the heading \"{}\" looks like a value; is the line of headings missing?",
            ShownName(name, i + 1));
    }
    return {};
}

}  // namespace

std::string AccountOf(const Learned& learned, const Screen& screen) {
    const Reference& reference = learned.reference;
    const MCVarList& list = reference.stats.GetVarList();
    std::vector<Taken> taken(list.Size(), {"not compared", "-", "-"});
    for (std::size_t i = 0; i < learned.data.columns.size(); ++i) {
        taken[i] = TakenOf(learned.data.columns[i].leftOut);
    }
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        taken[static_cast<std::size_t>(reference.stats.GetVarListIndex(slot))] =
            TakenOf(reference, slot);
    }
    TextTable table({{"Column", TextTable::Align::Left, 0, 12},
                     {"Kind"},
                     {"Values", TextTable::Align::Left, 1},
                     {"Missing", TextTable::Align::Right, 2}});
    for (std::size_t i = 0; i < taken.size(); ++i) {
        const std::string name = list.GetVarAt(static_cast<int>(i))->GetName();
        table.AddRow({{ShownName(name, i + 1), ""},
                      {taken[i].kind, ""},
                      {taken[i].values, ""},
                      {taken[i].missing, ""}});
    }
    const std::string title = fmt::format(
        "{}: {}, {}{}", learned.name, Plural(RowCount(reference).value_or(0), "row", "rows"),
        Plural(list.Size(), "column", "columns"),
        learned.separatedBy.empty() ? "" : ", separated by " + learned.separatedBy);
    std::string account = Wrapped(title, screen) + "\n" + table.Text(screen);
    const std::string few = FewValues(learned);
    if (!few.empty()) account += "\n" + Wrapped(few, screen);
    return account;
}

std::vector<std::string> RemarksOn(const SettledColumns& data, bool isOneFile) {
    const std::vector<SettledColumn>& columns = data.columns;
    std::vector<std::string> remarks;
    for (const std::string& remark : {HeadingsLikeData(columns), WrongDelimiter(data)}) {
        if (!remark.empty()) remarks.push_back(remark);
    }
    if (data.emptyRows > 0) {
        remarks.push_back(fmt::format(
            "{} of empty fields only {} counted as missing values, the first on line {}{}",
            Plural(data.emptyRows, "row", "rows"), data.emptyRows == 1 ? "is" : "are",
            data.firstEmptyRow.line, isOneFile ? std::string() : " of " + data.firstEmptyRow.file));
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string remark = RemarkOn(columns[i], isOneFile);
        if (remark.empty()) continue;
        remarks.push_back(
            fmt::format("column \"{}\" {}", ShownName(columns[i].column.name, i + 1), remark));
    }
    return remarks;
}

std::vector<std::string> RemarksOn(const Learned& learned) {
    std::vector<std::string> remarks = RemarksOn(learned.data, learned.fileCount == 1);
    const MADistStats& stats = learned.reference.stats;
    const bool isReference = !learned.data.columns.empty();
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        // A change shows in the bins of a reference; of new data the unreadable cells have not been
        // told yet.
        std::string remark = isReference ? CrowdedInWords(stats, slot)
                                         : UnreadableInWords(learned.reference.uncounted[slot]);
        if (remark.empty()) continue;
        if (!isReference && learned.fileCount > 1 && !learned.unreadableFiles[slot].empty()) {
            remark += " of " + learned.unreadableFiles[slot];
        }
        const int position = stats.GetVarListIndex(slot);
        const std::string name = stats.GetVarList().GetVarAt(position)->GetName();
        remarks.push_back(fmt::format(
            "column \"{}\": {}", ShownName(name, static_cast<std::size_t>(position) + 1), remark));
    }
    return remarks;
}

}  // namespace app
