#include "app/data/ColumnKinds.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <string_view>

#include "accredit/documents/NumberText.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"

using MADocuments::MissingTokens;
using MADocuments::ParseNumber;
using MADocuments::TrimBlanks;

namespace app {

namespace {

constexpr const char* kHeadingTwice = "an earlier column has this heading";

enum class Choice { None, Ignored, Categorical, Continuous };

// Every position of every heading: an ignored heading may stand at several. The texts are a
// stranger's, who could choose them so that a hash map becomes slow.
using Positions = std::multimap<std::string_view, std::size_t>;

void Choose(const std::vector<std::string>& names, Choice choice, const Positions& positions,
            std::vector<Choice>& choices) {
    for (const std::string& name : names) {
        const auto [first, last] = positions.equal_range(name);
        if (first == last && choice != Choice::Ignored) {
            throw UsageError(fmt::format("the data has no column \"{}\"", Shortened(name)));
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

// Which columns hold nothing but numbers. A column is no longer looked at once it is known to hold
// anything else.
std::vector<bool> FindNumberColumns(CsvReader& reader, const std::vector<Choice>& choices,
                                    const MissingTokens& missing) {
    std::vector<bool> numbers(choices.size(), true);
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < choices.size(); ++i) {
        if (choices[i] != Choice::Ignored) open.push_back(i);
    }
    const auto isSettled = [&](std::size_t column) {
        const std::string_view text = TrimBlanks(reader.Fields()[column]);
        if (missing.Contains(text) || ParseNumber(text)) return false;
        if (choices[column] == Choice::Continuous) reader.Refuse(column, NotANumber(text));
        numbers[column] = false;
        return true;
    };
    while (!open.empty() && reader.Next()) {
        open.erase(std::remove_if(open.begin(), open.end(), isSettled), open.end());
    }
    return numbers;
}

ColumnKind Kind(Choice choice, bool numbers) {
    if (choice == Choice::Ignored) return ColumnKind::Ignored;
    if (!numbers) return ColumnKind::TextCategory;
    return choice == Choice::Categorical ? ColumnKind::NumberCategory : ColumnKind::Continuous;
}

}  // namespace

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
        if (heading.empty()) reader.Refuse(i, "the heading is empty; --ignore '' leaves it out");
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

std::vector<Column> SettleKinds(CsvReader& reader, const ColumnChoices& choices,
                                const MissingTokens& missing) {
    const std::vector<Choice> chosen = ChoicesByColumn(reader.Headings(), choices);
    const std::vector<bool> numbers = FindNumberColumns(reader, chosen, missing);
    reader.Rewind();
    std::vector<Column> columns;
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        columns.push_back({reader.Headings()[i], Kind(chosen[i], numbers[i])});
    }
    return columns;
}

}  // namespace app
