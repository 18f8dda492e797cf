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

// A variable is known by its number, from 1, where its name is too long.
std::string Name(const CheckResult& result, std::size_t variable) {
    return ShownName(result.variables[variable].name, variable + 1);
}

Row VariableRow(const CheckedVariable& variable, const std::string& name) {
    return {name,
            variable.categorical ? "categorical" : "continuous",
            fmt::format("{}", variable.referenceCases),
            fmt::format("{}", variable.newCases),
            variable.pValue ? fmt::format("{:.6g}", *variable.pValue) : "-",
            fmt::format("{:g}", variable.weight),
            variable.reason.empty() ? variable.status.GetMessage() : variable.reason};
}

std::string Table(const CheckResult& result) {
    const bool weighted =
        std::any_of(result.variables.begin(), result.variables.end(),
                    [](const CheckedVariable& variable) { return variable.weight != 1.0; });
    std::vector<Row> rows{{"Variable", "Kind", "Reference", "New", "p-value", "Weight", "Status"}};
    for (std::size_t i = 0; i < result.variables.size(); ++i) {
        rows.push_back(VariableRow(result.variables[i], Name(result, i)));
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
    for (std::size_t i = 0; i < result.variables.size(); ++i) {
        if (result.variables[i].status.GetCode() == result.status.GetCode()) {
            return fmt::format(" (variable \"{}\")", Name(result, i));
        }
    }
    return {};
}

// What else would have to be looked for by comparing the files.
std::string UnknownCategories(const CheckResult& result) {
    std::string lines;
    for (std::size_t i = 0; i < result.variables.size(); ++i) {
        const CheckedVariable& variable = result.variables[i];
        if (variable.status.GetCode() != MAStatusCategoriesDiffer) continue;
        if (variable.unknownCategory.empty()) continue;
        lines += fmt::format("Variable \"{}\": the reference lacks the category \"{}\"\n",
                             Name(result, i), variable.unknownCategory);
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
        return fmt::format(
            "No accreditation: {} (variable \"{}\")\n", untested->reason,
            Name(result, static_cast<std::size_t>(untested - result.variables.begin())));
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
