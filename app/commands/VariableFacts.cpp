#include "app/commands/VariableFacts.h"

#include <fmt/format.h>

#include <optional>
#include <vector>

#include "app/base/HtmlText.h"
#include "app/commands/Words.h"

namespace app {

namespace {

std::string Fact(const char* term, const std::string& text) {
    return fmt::format("<dt>{}<dd>{}\n", term, HtmlText(text));
}

std::string TestInWords(const MAChange& change) {
    if (!change.test) return "not tested";
    if (change.test->cells == 1) return "all in one cell";
    return fmt::format("stability index {:.3f}, {} moved, p {}, adjusted {}",
                       change.test->stabilityIndex, Percent(change.shareMoved),
                       PValueText(change.test->pValue), PValueText(change.adjustedPValue));
}

// Of missing or unreadable data.
std::string UncountedInWords(const MAUncountedChange& change) {
    if (!change.referenceShare && !change.newShare) return "not known";
    if (!change.referenceShare) {
        return fmt::format("not known of the reference; {}", Percent(change.newShare));
    }
    if (!change.newShare) {
        return fmt::format("{}; not known of the new data", Percent(change.referenceShare));
    }
    if (*change.referenceShare == 0.0 && *change.newShare == 0.0) return "none";
    return fmt::format("{} -> {}; {}", Percent(change.referenceShare), Percent(change.newShare),
                       TestInWords(change));
}

std::string FitInWords(const CheckedVariable& variable) {
    std::string words = variable.pValue ? "p " + PValueText(variable.pValue) : "no p";
    if (!variable.status.IsOK()) words += fmt::format(": {}", variable.status.GetMessage());
    if (variable.weight != 1.0) words += fmt::format(", weight {:g}", variable.weight);
    return words;
}

bool HasUnreadable(const CheckedVariable& variable) {
    return variable.newUncounted.unreadable.value_or(0) > 0 ||
           variable.referenceUncounted.unreadable.value_or(0) > 0;
}

}  // namespace

std::string Sentence(std::string words) {
    if (!words.empty() && words[0] >= 'a' && words[0] <= 'z') {
        words[0] = static_cast<char>(words[0] - 'a' + 'A');
    }
    return words;
}

std::string VariableFacts(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    const MAVariableComparison& comparison = checked.comparison;
    std::string html = "<dl>\n";
    html += Fact("Cases", fmt::format("{} -> {}", checked.referenceCases, checked.newCases));
    html += Fact("Values", TestInWords(comparison.values));
    const std::string moments = MomentsInWords(comparison);
    if (!moments.empty()) html += Fact("Moments", moments);
    html += Fact("Missing", UncountedInWords(comparison.missing));
    if (HasUnreadable(checked)) html += Fact("Unreadable", UncountedInWords(comparison.unreadable));
    html += Fact("Fit", FitInWords(checked)) + "</dl>\n";
    const std::vector<std::string> notes = NotesOn(result, variable);
    if (notes.empty()) return html;
    html += "<ul>\n";
    for (const std::string& note : notes) {
        html += fmt::format("<li>{}\n", HtmlText(Sentence(note)));
    }
    return html + "</ul>\n";
}

}  // namespace app
