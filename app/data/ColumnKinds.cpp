#include "app/data/ColumnKinds.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "accredit/documents/NumberText.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/data/CellText.h"

using MADocuments::MissingTokens;
using MADocuments::TrimBlanks;

namespace app {

namespace {

// Every position of every heading: an ignored heading may stand at several. The texts are a
// stranger's, who could choose them so that a hash map becomes slow.
using Positions = std::multimap<std::string_view, std::size_t>;

std::string NoColumn(const std::string& name, const Positions& positions) {
    std::string words = fmt::format("the data has no column \"{}\"", Shortened(name));
    if (positions.size() > 1) return words;
    const std::string_view only = positions.begin()->first;
    words += fmt::format("; its only one is \"{}\"", Shortened(only));
    const std::size_t found = only.find_first_of(kSearchedDelimiters);
    if (found != std::string_view::npos) {
        words += fmt::format(", whose parts {} sets apart", DelimiterOption(only[found]));
    }
    return words;
}

void Choose(const std::vector<std::string>& names, Choice choice, const Positions& positions,
            std::vector<Choice>& choices) {
    for (const std::string& name : names) {
        const auto [first, last] = positions.equal_range(name);
        if (first == last && choice != Choice::Ignored) {
            throw UsageError(NoColumn(name, positions));
        }
        for (auto position = first; position != last; ++position) {
            Choice& chosen = choices[position->second];
            if (chosen != Choice::None && chosen != choice) {
                throw UsageError(fmt::format("contradicting options for the column \"{}\"",
                                             ShownName(name, position->second + 1)));
            }
            chosen = choice;
        }
    }
}

constexpr std::uint64_t kMaxFew = 100;
constexpr std::uint64_t kCellsToOneOdd = 1000;
constexpr std::uint64_t kMaxKeptKeys = 1000;

bool AreFew(std::uint64_t odd, std::uint64_t present) {
    return odd <= kMaxFew && odd * kCellsToOneOdd <= present;
}

// So many different texts of a column are counted exactly: fewer where there are many columns,
// whose memory adds up.
std::size_t DistinctLimit(std::size_t columns) {
    constexpr std::size_t kAll = std::size_t{1} << 22U;
    return std::clamp<std::size_t>(kAll / columns, std::size_t{1} << 8U, std::size_t{1} << 14U);
}

// What to do about a number that is written as spreadsheets show it.
std::string NumberRemedy(const ColumnFacts& facts, bool decimalComma) {
    const char* const plain =
        "export the numbers without separators of thousands and signs of a unit";
    if (decimalComma && facts.points == facts.spreadsheetNumbers) {
        return "with --decimal-comma a point is no decimal sign; leave that out, or write all "
               "numbers with commas";
    }
    if (decimalComma) {
        return std::string("with --decimal-comma a point is no decimal sign; ") + plain;
    }
    if (facts.decimalCommas != facts.spreadsheetNumbers) return plain;
    if (facts.ambiguousCommas != facts.spreadsheetNumbers) {
        return "--decimal-comma reads a comma as the decimal sign";
    }
    return "if the comma is the decimal sign, --decimal-comma reads it; if it sets thousands "
           "apart, export the numbers without it";
}

// What is wrong with such a number, and what to do.
std::string NotPlain(std::string_view text, const ColumnFacts& facts, const CsvReader& reader) {
    return fmt::format(
        "\"{}\" is a number {}; {}", Shortened(text),
        facts.points == facts.spreadsheetNumbers ? "with a point" : "as spreadsheets show it",
        NumberRemedy(facts, reader.HasDecimalComma()));
}

std::string NotContinuous(std::string_view text, const CsvReader& reader) {
    ColumnScan cell(1);
    cell.Take(text, text, std::nan(""), reader);
    const ColumnFacts facts = cell.Facts();
    if (facts.spreadsheetNumbers > 0) return NotPlain(text, facts, reader);
    return fmt::format("{}; {} reads it as a missing value", NotANumber(text),
                       ShellOption("--missing", text, "TOKEN"));
}

bool IsEmptyRow(const std::vector<std::string_view>& fields) {
    return fields.size() > 1 && std::all_of(fields.begin(), fields.end(),
                                            [](std::string_view field) { return field.empty(); });
}

// Reads the data to its end, and tells of rows without any value. A column that is chosen is no
// longer looked at once its kind is known.
std::vector<ColumnScan> ScanColumns(CsvReader& reader, const std::vector<Choice>& choices,
                                    const MissingTokens& missing, SettledColumns& settled) {
    std::vector<ColumnScan> scans;
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < choices.size(); ++i) {
        scans.emplace_back(DistinctLimit(choices.size()));
        if (choices[i] != Choice::Ignored) open.push_back(i);
    }
    reader.ExpectNumbers(open);
    const auto isKnown = [&](std::size_t column) {
        const std::string_view field = reader.Field(column);
        const std::string_view text = TrimBlanks(field);
        if (missing.Contains(text)) return false;
        const double number = reader.Number(column);
        if (std::isnan(number) && choices[column] == Choice::Continuous) {
            reader.Refuse(column, NotContinuous(text, reader));
        }
        scans[column].Take(field, text, number, reader);
        return std::isnan(number) && choices[column] == Choice::Categorical;
    };
    if (open.empty()) return scans;
    while (reader.Next()) {
        open.erase(std::remove_if(open.begin(), open.end(), isKnown), open.end());
        if (reader.Field(0).empty() && IsEmptyRow(reader.Fields()) && settled.emptyRows++ == 0) {
            settled.firstEmptyRow = {reader.FileName(), reader.RowLine()};
        }
    }
    return scans;
}

[[noreturn]] void RefuseSpreadsheetNumbers(const CsvReader& reader, std::size_t column,
                                           const ColumnFacts& facts) {
    const std::string& name = reader.Headings()[column];
    const ShownCell& first = facts.firstSpreadsheetNumber;
    // The columns of a further file may stand in another order.
    const std::string place =
        reader.FileCount() == 1 ? fmt::format("column {}", column + 1) : "column";
    throw InputError(fmt::format(
        "{}:{}: {} \"{}\": {}; {} takes the column as categories", first.file, first.line, place,
        Shortened(name), NotPlain(first.text, facts, reader), ShellOption("--categorical", name)));
}

SettledColumn Settle(const CsvReader& reader, std::size_t column, Choice choice,
                     const ColumnScan& scan) {
    SettledColumn settled;
    settled.column.name = reader.Headings()[column];
    settled.facts = scan.Facts();
    if (!SettleByFacts(choice, settled)) RefuseSpreadsheetNumbers(reader, column, settled.facts);
    if (settled.column.kind == ColumnKind::Continuous) settled.cutPoints = scan.CutPoints();
    return settled;
}

// Above a table there may be a title, in the first of its fields.
std::string EmptyHeading(const std::vector<std::string>& headings) {
    const auto empty = std::count(headings.begin(), headings.end(), "");
    return 2 * static_cast<std::size_t>(empty) > headings.size()
               ? "the heading is empty, as most are; does a title stand above the headings? "
                 "'tail -n +2 FILE' and a pipe to '-' leave a line out"
               : "the heading is empty; --ignore '' leaves it out";
}

}  // namespace

std::vector<Choice> ChoicesByColumn(const std::vector<std::string>& headings,
                                    const ColumnChoices& choices) {
    Positions positions;
    for (std::size_t i = 0; i < headings.size(); ++i) positions.emplace(headings[i], i);
    std::vector<Choice> result(headings.size(), Choice::None);
    Choose(choices.ignored, Choice::Ignored, positions, result);
    Choose(choices.categorical, Choice::Categorical, positions, result);
    Choose(choices.continuous, Choice::Continuous, positions, result);
    return result;
}

bool SettleByFacts(Choice choice, SettledColumn& settled) {
    settled.isChosen = choice != Choice::None;
    const ColumnFacts& facts = settled.facts;
    const std::uint64_t present = facts.present;
    if (choice == Choice::Ignored) {
        settled.leftOut = LeftOut::Ignored;
        settled.facts = {};
        return true;
    }
    if (choice == Choice::Categorical) {
        settled.column.kind =
            facts.noNumbers > 0 ? ColumnKind::TextCategory : ColumnKind::NumberCategory;
        return true;
    }
    const std::uint64_t others = facts.noNumbers - facts.spreadsheetNumbers;
    const bool looksLikeNumbers = facts.spreadsheetNumbers > 0 && AreFew(others, present);
    if (looksLikeNumbers && (others == 0 || !AreFew(facts.noNumbers, present))) return false;
    if (AreFew(facts.noNumbers, present)) {
        settled.column.kind = ColumnKind::Continuous;
    } else if (AreFew(present - facts.dates, present)) {
        settled.leftOut = LeftOut::Dates;
    } else if (facts.distinct > kMaxKeptKeys && 2 * facts.distinct > present) {
        settled.leftOut = LeftOut::Keys;
    } else {
        settled.column.kind = ColumnKind::TextCategory;
    }
    return true;
}

void RequireColumns(const std::vector<std::string>& names,
                    const std::vector<const std::vector<std::string>*>& lists,
                    const std::string& complaint) {
    std::set<std::string_view> known;
    for (const std::vector<std::string>* list : lists) known.insert(list->begin(), list->end());
    for (const std::string& name : names) {
        if (known.count(name) == 0) {
            throw UsageError(fmt::format("{} \"{}\"", complaint, Shortened(name)));
        }
    }
}

void CheckHeadings(const CsvReader& reader, const std::vector<std::string>& ignored) {
    std::set<std::string_view> known;
    const std::set<std::string_view> exempt(ignored.begin(), ignored.end());
    for (std::size_t i = 0; i < reader.Headings().size(); ++i) {
        const std::string& heading = reader.Headings()[i];
        if (exempt.count(heading) != 0) continue;
        if (heading.empty()) reader.Refuse(i, EmptyHeading(reader.Headings()));
        if (!known.insert(heading).second) reader.Refuse(i, kHeadingTwice);
    }
}

void CheckNewHeadings(const CsvReader& reader, const std::vector<std::string>& reference,
                      const std::vector<std::string>& ignored) {
    std::set<std::string_view> expected(reference.begin(), reference.end());
    for (const std::string& name : ignored) expected.erase(name);
    std::set<std::string_view> met;
    for (std::size_t i = 0; i < reader.Headings().size(); ++i) {
        const std::string& heading = reader.Headings()[i];
        if (expected.count(heading) != 0 && !met.insert(heading).second) {
            reader.Refuse(i, kHeadingTwice);
        }
    }
}

SettledColumns SettleKinds(CsvReader& reader, const ColumnChoices& choices,
                           const MissingTokens& missing) {
    const std::vector<Choice> chosen = ChoicesByColumn(reader.Headings(), choices);
    SettledColumns settled;
    settled.delimiter = reader.Delimiter();
    const std::vector<ColumnScan> scans = ScanColumns(reader, chosen, missing, settled);
    reader.Rewind();
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        settled.columns.push_back(Settle(reader, i, chosen[i], scans[i]));
    }
    return settled;
}

std::string WrongDelimiter(const SettledColumns& data) {
    if (data.columns.size() != 1) return {};
    const SettledColumn& only = data.columns.front();
    for (std::size_t i = 0; i < kSearchedDelimiters.size(); ++i) {
        const char delimiter = kSearchedDelimiters[i];
        if (delimiter == data.delimiter || 2 * only.facts.delimiters[i] <= only.facts.present) {
            continue;
        }
        std::string words = fmt::format("the only column is full of {}; {} sets its parts apart",
                                        DelimiterName(delimiter), DelimiterOption(delimiter));
        if (only.column.name.find(delimiter) == std::string::npos) {
            words +=
                "; if a title stands above the headings, 'tail -n +2 FILE' and a pipe to '-' leave "
                "it out";
        }
        return words;
    }
    return {};
}

}  // namespace app
