#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "accredit/host/MAStatus.h"
#include "app/base/Printable.h"
#include "app/commands/Report.h"
#include "app/commands/TextTable.h"
#include "app/commands/Words.h"

namespace app {

namespace {

// The answer is to stay on the screen, so that only so much stands below it unless all is asked
// for.
constexpr std::size_t kRows = 10;
constexpr std::size_t kNotes = 5;

constexpr std::size_t kLeastName = 12;
constexpr std::size_t kMostName = 40;

std::string ColourOf(MAVerdict verdict) {
    if (verdict == MAVerdict::Major) return "\x1b[31m";
    return verdict == MAVerdict::Moderate ? "\x1b[33m" : "";
}

std::vector<TextTable::Column> Columns(const CheckResult& result, bool showAll) {
    using Align = TextTable::Align;
    constexpr std::size_t kLeastChange = 24;
    std::vector<TextTable::Column> columns{{"Variable", Align::Left, 0, kLeastName},
                                           {"Verdict", Align::Left},
                                           {"Moved", Align::Right, 1},
                                           {"Index", Align::Right, 3},
                                           {"p-value", Align::Right, 2}};
    if (showAll) {
        columns.push_back({"Fit", Align::Right, 4});
        const bool isWeighted =
            std::any_of(result.variables.begin(), result.variables.end(),
                        [](const CheckedVariable& variable) { return variable.weight != 1.0; });
        if (isWeighted) columns.push_back({"Weight", Align::Right, 5});
    }
    columns.push_back({"What changed", Align::Left, 0, kLeastChange});
    return columns;
}

std::vector<TextTable::Entry> EntriesOf(const CheckResult& result, std::size_t i,
                                        const std::vector<TextTable::Column>& columns,
                                        std::size_t nameWidth) {
    const CheckedVariable& variable = result.variables[i];
    const MAVerdict verdict = variable.comparison.verdict;
    const MAChange& table = DecisiveTable(variable);
    std::vector<TextTable::Entry> row;
    for (const TextTable::Column& column : columns) {
        TextTable::Entry entry;
        if (column.title == "Variable") entry.text = ShownName(variable.name, i + 1, nameWidth);
        if (column.title == "Verdict") entry = {VerdictText(verdict), ColourOf(verdict)};
        if (column.title == "Moved") entry.text = Percent(table.shareMoved);
        if (column.title == "Index") {
            entry.text = table.test ? fmt::format("{:.3f}", table.test->stabilityIndex) : "-";
        }
        if (column.title == "p-value") entry.text = PValueText(table.adjustedPValue);
        if (column.title == "Fit") entry.text = PValueText(variable.pValue);
        if (column.title == "Weight") entry.text = fmt::format("{:g}", variable.weight);
        if (column.title == "What changed") entry.text = ChangeInWords(result, i);
        row.push_back(std::move(entry));
    }
    return row;
}

std::string Table(const CheckResult& result, bool showAll, const Screen& screen) {
    const std::vector<std::size_t> order = BySize(result);
    std::size_t rows = order.size();
    const auto interesting = static_cast<std::size_t>(
        std::count_if(order.begin(), order.end(),
                      [&result](std::size_t i) { return IsOfInterest(result.variables[i]); }));
    if (!showAll) rows = std::min(interesting, kRows);
    std::string text;
    if (rows > 0) {
        const std::vector<TextTable::Column> columns = Columns(result, showAll);
        TextTable table(columns);
        // A name is cut where its number still stands behind it.
        const std::size_t nameWidth =
            screen.width > 0 ? std::clamp(screen.width / 3, kLeastName, kMostName) : kMostName;
        for (std::size_t n = 0; n < rows; ++n)
            table.AddRow(EntriesOf(result, order[n], columns, nameWidth));
        text = "\n" + table.Text(screen);
    }
    if (rows == order.size()) return text;
    std::string rest;
    if (interesting > rows) {
        rest = fmt::format("{} more like these", interesting - rows);
    }
    if (order.size() > interesting) {
        rest += fmt::format("{}{} did not change", rest.empty() ? "" : ", ",
                            order.size() - interesting);
    }
    return text + "\n" + Wrapped(rest + "; --all shows them.", screen);
}

std::string Notes(const CheckResult& result, bool showAll, const Screen& screen) {
    std::string text;
    std::size_t count = 0;
    for (const std::size_t i : BySize(result)) {
        for (const std::string& note : NotesOn(result, i)) {
            if (++count > kNotes && !showAll) continue;
            text += Wrapped(fmt::format("{}: {}.", NameOf(result, i), note), screen);
        }
    }
    if (count > kNotes && !showAll) {
        text += Wrapped(fmt::format("{} more notes; --all shows them.", count - kNotes), screen);
    }
    return text.empty() ? "" : "\n" + text;
}

std::string RulesInWords(const CheckResult& result, const CheckOptions& options) {
    std::string rules;
    for (const std::string& rule : FailedRules(result, options.rules)) {
        rules += (rules.empty() ? "" : ", ") + rule;
    }
    return rules;
}

std::string Part(const CheckResult& result, const CheckOptions& options, const Screen& screen,
                 bool isOneOfSeveral) {
    std::string text = isOneOfSeveral ? result.newName + ": " : "";
    text = Wrapped(text + AnswerInWords(result), screen);
    text += Table(result, options.showAll, screen);
    text += Notes(result, options.showAll, screen);
    text += "\n" + Wrapped(AccreditationInWords(result, options.rules), screen);
    const std::string failed = RulesInWords(result, options);
    return failed.empty() ? text : text + Wrapped("Failed: " + failed, screen);
}

}  // namespace

std::string TextReport(const std::vector<CheckResult>& results, const CheckOptions& options,
                       const Screen& screen) {
    std::string text;
    for (const CheckResult& result : results) {
        if (!text.empty()) text += "\n";
        text += Part(result, options, screen, results.size() > 1);
    }
    if (results.size() == 1) return text;
    std::string failed;
    for (const CheckResult& result : results) {
        const std::string rules = RulesInWords(result, options);
        if (rules.empty()) continue;
        failed += fmt::format("{}{} ({})", failed.empty() ? "" : ", ", result.newName, rules);
    }
    return failed.empty() ? text : text + "\n" + Wrapped("Failed: " + failed, screen);
}

}  // namespace app
