#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "accredit/host/MAStatus.h"
#include "app/base/Characters.h"
#include "app/base/Printable.h"
#include "app/commands/Report.h"

namespace app {

namespace {

constexpr std::size_t kColumns = 7;
constexpr std::size_t kWeightColumn = 5;
using Row = std::array<std::string, kColumns>;

std::string Padded(const std::string& text, std::size_t width, bool right) {
    const std::string blanks(width - std::min(width, DisplayWidth(text)), ' ');
    return right ? blanks + text : text + blanks;
}

// The library's words for bad cut points are for a caller that gives them. Here the reference's
// values make them.
std::string Words(const MCCommon::MCStatus& status) {
    if (status.GetCode() != MAStatusBadCutPoints) return status.GetMessage();
    return "Its values vary too little for their size, or too widely, to be summarised in bins";
}

Row VariableRow(const CheckedVariable& variable, std::size_t number) {
    return {ShownName(variable.name, number),
            variable.categorical ? "categorical" : "continuous",
            fmt::format("{}", variable.referenceCases),
            fmt::format("{}", variable.newCases),
            variable.pValue ? fmt::format("{:.6g}", *variable.pValue) : "-",
            fmt::format("{:g}", variable.weight),
            variable.reason.empty() ? Words(variable.status) : variable.reason};
}

std::string Table(const CheckResult& result) {
    const bool weighted =
        std::any_of(result.variables.begin(), result.variables.end(),
                    [](const CheckedVariable& variable) { return variable.weight != 1.0; });
    std::vector<Row> rows{{"Variable", "Kind", "Reference", "New", "p-value", "Weight", "Status"}};
    for (const CheckedVariable& variable : result.variables) {
        rows.push_back(VariableRow(variable, rows.size()));
    }

    std::array<std::size_t, kColumns> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < kColumns; ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    std::string table;
    for (const Row& row : rows) {
        for (std::size_t i = 0; i + 1 < kColumns; ++i) {
            if (i == kWeightColumn && !weighted) continue;
            table += Padded(row[i], widths[i], i >= 2) + "  ";
        }
        table += row.back() + "\n";
    }
    return table;
}

// The first variable that keeps the comparison from giving a number, with this status.
std::string Culprit(const CheckResult& result) {
    for (const CheckedVariable& variable : result.variables) {
        if (variable.status.GetCode() == result.status.GetCode()) {
            return fmt::format(" (variable \"{}\")", Shortened(variable.name));
        }
    }
    return {};
}

// What else would have to be looked for by comparing the files.
std::string UnknownCategories(const CheckResult& result) {
    std::string lines;
    for (const CheckedVariable& variable : result.variables) {
        if (variable.status.GetCode() != MAStatusCategoriesDiffer) continue;
        if (variable.unknownCategory.empty()) continue;
        lines += fmt::format("Variable \"{}\": the reference lacks the category \"{}\"\n",
                             Shortened(variable.name), variable.unknownCategory);
    }
    return lines;
}

std::string Conclusion(const CheckResult& result, std::optional<double> failBelow) {
    if (!result.status.IsOK()) {
        return fmt::format("No accreditation: {}{}\n", Words(result.status), Culprit(result));
    }
    if (!result.accreditation) {
        const auto untested =
            std::find_if(result.variables.begin(), result.variables.end(),
                         [](const CheckedVariable& variable) { return !variable.reason.empty(); });
        if (untested == result.variables.end()) return "No accreditation: the weights sum to 0\n";
        return fmt::format("No accreditation: {} (variable \"{}\")\n", untested->reason,
                           Shortened(untested->name));
    }
    std::string shown = fmt::format("{:.6g}", *result.accreditation);
    if (!failBelow || *result.accreditation >= *failBelow) {
        return fmt::format("Accreditation {}\n", shown);
    }
    std::string bound = fmt::format("{:.6g}", *failBelow);
    if (shown == bound) {
        shown = fmt::format("{}", *result.accreditation);
        bound = fmt::format("{}", *failBelow);
    }
    return fmt::format("Accreditation {}, which is below {}\n", shown, bound);
}

}  // namespace

std::string TextReport(const CheckResult& result, std::optional<double> failBelow) {
    return Table(result) + "\n" + UnknownCategories(result) + Conclusion(result, failBelow);
}

}  // namespace app
