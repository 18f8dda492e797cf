#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <optional>

#include "app/base/HtmlText.h"
#include "app/base/InputFile.h"
#include "app/base/Printable.h"
#include "app/commands/DistributionTable.h"
#include "app/commands/PageStyle.h"
#include "app/commands/Report.h"
#include "app/commands/VariableFacts.h"
#include "app/commands/Words.h"

namespace app {

namespace {

// A part of a page has a number if there are several, and its headings stand one level deeper.
struct Part {
    const CheckResult& result;
    std::size_t number;  // from 1; 0 for the only one
};

std::string Heading(const Part& part, int level, const std::string& html) {
    const int shown = part.number > 0 ? level + 1 : level;
    return fmt::format("<h{0}>{1}</h{0}>\n", shown, html);
}

std::string Anchor(const Part& part, std::size_t variable) {
    return part.number > 0 ? fmt::format("n{}v{}", part.number, variable + 1)
                           : fmt::format("v{}", variable + 1);
}

std::string VerdictWords(MAVerdict verdict) {
    return std::string(VerdictText(verdict)) + (IsChange(verdict) ? " change" : "");
}

std::string Section(const Part& part, std::size_t i) {
    const MAVerdict verdict = part.result.variables[i].comparison.verdict;
    const std::string title = fmt::format("<bdi>{}</bdi> <b>{}</b>",
                                          HtmlText(NameOf(part.result, i)), VerdictWords(verdict));
    const std::string words = ChangeInWords(part.result, i);
    return fmt::format("<section class=\"v {}\" id={}>\n{}<p>{}</p>\n{}</section>\n",
                       IsChange(verdict) ? VerdictText(verdict) : "untested", Anchor(part, i),
                       Heading(part, 3, title), HtmlText(Sentence(words)),
                       DistributionTable(part.result, i) + VariableFacts(part.result, i));
}

std::string Folded(const Part& part, std::size_t i) {
    const MAChange& values = part.result.variables[i].comparison.values;
    std::string words = ChangeInWords(part.result, i);
    if (words.empty() && values.test && values.test->cells > 1) {
        words = fmt::format("stability index {:.3f}", values.test->stabilityIndex);
    }
    return fmt::format(
        "<details><summary><bdi>{}</bdi> <small>{}</small></summary>\n<div class=v>{}</div>"
        "</details>\n",
        HtmlText(NameOf(part.result, i)), HtmlText(words),
        DistributionTable(part.result, i) + VariableFacts(part.result, i));
}

std::string Contents(const Part& part, const std::vector<std::size_t>& changed) {
    if (changed.size() < 2) return {};
    std::string html = "<nav aria-label=\"Changed variables\"><ol>\n";
    for (const std::size_t i : changed) {
        const CheckedVariable& variable = part.result.variables[i];
        html +=
            fmt::format("<li><a href=#{}><bdi>{}</bdi></a> {}\n", Anchor(part, i),
                        HtmlText(NameOf(part.result, i)), VerdictText(variable.comparison.verdict));
    }
    return html + "</ol></nav>\n";
}

std::string AnswerOf(const Part& part, const CheckOptions& options) {
    std::string html =
        fmt::format("<p class=answer>{}</p>\n<p>{}.</p>\n", HtmlText(AnswerInWords(part.result)),
                    HtmlText(AccreditationInWords(part.result, options.rules)));
    std::string rules;
    for (const std::string& rule : FailedRules(part.result, options.rules)) {
        rules += (rules.empty() ? "" : ", ") + rule;
    }
    if (!rules.empty()) {
        html += fmt::format("<p class=failed><strong>Failed:</strong> {}</p>\n", HtmlText(rules));
    }
    return html;
}

std::string Variables(const Part& part) {
    std::vector<std::size_t> changed;
    std::vector<std::size_t> untested;
    std::vector<std::size_t> unchanged;
    for (const std::size_t i : BySize(part.result)) {
        const MAVerdict verdict = part.result.variables[i].comparison.verdict;
        auto& group = IsChange(verdict)                 ? changed
                      : verdict == MAVerdict::NotTested ? untested
                                                        : unchanged;
        group.push_back(i);
    }
    std::string html;
    if (!changed.empty()) html += Heading(part, 2, "What changed, largest first");
    html += Contents(part, changed);
    for (const std::size_t i : changed) html += Section(part, i);
    if (!untested.empty()) html += Heading(part, 2, "Not tested");
    for (const std::size_t i : untested) html += Section(part, i);
    if (!unchanged.empty()) html += Heading(part, 2, "What did not change");
    for (const std::size_t i : unchanged) html += Folded(part, i);
    return html;
}

constexpr const char* kLegend =
    "<p class=legend>The length of a bar is the share of the cases, "
    "<svg role=img aria-label=\"a wide bar\"><line x2=\"100%\" /></svg> in the reference and "
    "<svg role=img aria-label=\"a narrow bar\"><line /><line x2=\"100%\" /></svg> in the new "
    "data. Beside them stand the cases and their "
    "shares.</p>\n";

// What the figures of the page mean.
std::string Glossary(double alpha) {
    return fmt::format(
        "<dl>\n"
        "<dt>Change<dd>A difference that is more than chance: its adjusted p is below {0:g}. Minor "
        "below a stability index of 0.1, major from 0.25, moderate between.\n"
        "<dt>p<dd>How often chance alone makes a difference as large as this or larger, by the "
        "chi-square test of two samples; then adjusted for the number of tests.\n"
        "<dt>Stability index<dd>The size of a difference, 0 if there is none.\n"
        "<dt>Moved<dd>The share of the cases that would have to lie elsewhere to make one "
        "distribution of the other.\n"
        "<dt>Moments<dd>How far the mean moved, in standard deviations (sd) of the reference, and "
        "how many times its deviation the new one is.\n"
        "<dt>Fit<dd>The test that the accreditation is the mean of; it takes the reference as "
        "exact.\n"
        "</dl>\n",
        alpha);
}

std::string FileRow(const char* kind, const std::string& name,
                    const MADocuments::Reference& summary) {
    const MCApplicInfo4XML& made = summary.application;
    std::string by;
    for (const std::string& part : {made.name, made.version, made.timestamp}) {
        if (!part.empty()) by += (by.empty() ? "" : " ") + Shortened(part);
    }
    const std::optional<std::uint64_t> rows = RowCount(summary);
    return fmt::format("<tr><th>{}<td><bdi>{}</bdi><td>{}<td>{}\n", kind, HtmlText(name),
                       rows ? fmt::format("{}", *rows) : "not known",
                       by.empty() ? "in this run" : HtmlText(by));
}

std::string Compared(const std::vector<CheckResult>& results, const std::string& referenceName,
                     const CheckOptions& options, const MCApplicInfo4XML& run) {
    std::string html =
        "<h2>What was compared, and how</h2>\n<table class=files><caption>Files</caption><tr>"
        "<th>Role<th>File<th>Rows<th>Summarised\n";
    html += FileRow("Reference", referenceName, *results.front().reference);
    for (const CheckResult& result : results) {
        html += FileRow("New data", result.newName, result.newSummary);
    }
    return html +
           fmt::format("</table>\n<p>Compared by {} {} at {}, alpha {:g}.</p>\n", run.name,
                       run.version, run.timestamp, options.alpha) +
           Glossary(options.alpha);
}

std::string Head(const std::string& title) {
    // Nothing may be loaded, not even the icon that browsers ask a server for.
    return fmt::format(
        "<!DOCTYPE html>\n<html lang=en>\n<head>\n<meta charset=utf-8>\n"
        "<meta http-equiv=Content-Security-Policy content=\"default-src 'none'; style-src "
        "'unsafe-inline'; img-src data:\">\n"
        "<meta name=viewport content=\"width=device-width, initial-scale=1\">\n"
        "<link rel=icon href=\"data:,\">\n<title>{}</title>\n<style>{}</style>\n</head>\n",
        HtmlText(title), kPageStyle);
}

}  // namespace

std::string HtmlReport(const std::vector<CheckResult>& results, const CheckOptions& options,
                       const MCApplicInfo4XML& run) {
    const std::string referenceName = FileName(options.referencePath);
    const bool isOne = results.size() == 1;
    const std::string title = fmt::format(
        "{} compared with {}",
        isOne ? results.front().newName : fmt::format("{} files", results.size()), referenceName);
    std::string html = Head(title) + fmt::format("<body>\n<main>\n<h1>{}</h1>\n", HtmlText(title));
    if (isOne) {
        const Part part{results.front(), 0};
        html += AnswerOf(part, options) + kLegend + Variables(part);
    } else {
        html += "<nav aria-label=\"New files\"><ul>\n";
        for (std::size_t n = 1; n <= results.size(); ++n) {
            html += fmt::format("<li><a href=#n{}><bdi>{}</bdi></a>: {}\n", n,
                                HtmlText(results[n - 1].newName),
                                HtmlText(AnswerInWords(results[n - 1])));
        }
        html += std::string("</ul></nav>\n") + kLegend;
        for (std::size_t n = 1; n <= results.size(); ++n) {
            const Part part{results[n - 1], n};
            html += fmt::format("<section class=part id=n{}>\n<h2><bdi>{}</bdi></h2>\n", n,
                                HtmlText(part.result.newName)) +
                    AnswerOf(part, options) + Variables(part) + "</section>\n";
        }
    }
    return html + Compared(results, referenceName, options, run) + "</main>\n</body>\n</html>\n";
}

}  // namespace app
